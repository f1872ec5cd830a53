// Records the hub sends on its own initiative, and the application-state request.
#include <cstring>

#include "hub/AppStateReply.h"
#include "tessarine/IpcServerManager.h"
#include "tessarine/TextField.h"
#include "transport/AnswerStream.h"
#include "transport/ChunkedText.h"

namespace tessarine {

namespace {

message clearedRecord(std::int32_t type, std::int32_t code) {
    message record;
    record.clear();
    record.type = type;
    record.code = code;
    return record;
}

}  // namespace

bool IpcServerManager::downloadComplete(std::string first, std::string second) {
    message record = clearedRecord(MSG_CAROUSEL, CAROUSEL_DOWNLOAD_COMPLETE);
    writeTextField(record, FIRST_TEXT_OFFSET, first);
    writeTextField(record, SECOND_TEXT_OFFSET, second);
    return counted(server_->sendMessage(record));
}

bool IpcServerManager::changeGraphicsSettings(ipcutil::Rectangle_t first, ipcutil::Rectangle_t second) {
    message record = clearedRecord(MSG_VIDEO, VIDEO_GRAPHICS_SETTINGS);
    record.put(GRAPHICS_FIRST_OFFSET, first);
    record.put(GRAPHICS_SECOND_OFFSET, second);
    return counted(server_->sendMessage(record));
}

bool IpcServerManager::endOfMedia(int handle) {
    message record = clearedRecord(MSG_MEDIA, MEDIA_END_OF_MEDIA);
    record.put(END_OF_MEDIA_HANDLE_OFFSET, handle);
    return counted(server_->sendMessage(record));
}

bool IpcServerManager::sendDsmCCCommand(ipcutil::DsmCCCommand_t command) {
    message record = clearedRecord(MSG_DSMCC, command.commandCode);
    record.put(DSMCC_VALUE_OFFSET, command.commandValue);
    record.bytes()[DSMCC_BYTE_OFFSET] = command.commandByte;
    std::lock_guard<std::mutex> serial(dsmccLock_);
    AnswerStream records(*server_);
    encodeChunkedText(records, record, DSMCC_TEXT_OFFSET, DSMCC_TEXT_SIZE, command.commandText);
    return counted(records.finish());
}

bool IpcServerManager::counted(bool sent) {
    if (sent) eventsSent_.fetch_add(1);
    return sent;
}

std::uint64_t IpcServerManager::eventsSent() const { return eventsSent_.load(); }

int IpcServerManager::setApplicationState(int state) {
    IpcServer& server = *server_;
    // Only the send touches the hub: a wait ended by destroy() returns without it.
    return AppStateReply::exchange([&server, state] {
        message record = clearedRecord(MSG_APP_STATE, state);
        return server.sendMessage(record);
    });
}

}  // namespace tessarine
