// Records the hub sends on its own initiative, and the application-state request.
#include <cstring>

#include "hub/AppStateReply.h"
#include "tessarine/IpcServerManager.h"
#include "tessarine/TextField.h"
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
    return server_->sendMessage(record);
}

bool IpcServerManager::changeGraphicsSettings(ipcutil::Rectangle_t first, ipcutil::Rectangle_t second) {
    message record = clearedRecord(MSG_VIDEO, VIDEO_GRAPHICS_SETTINGS);
    record.put(GRAPHICS_FIRST_OFFSET, first);
    record.put(GRAPHICS_SECOND_OFFSET, second);
    return server_->sendMessage(record);
}

bool IpcServerManager::endOfMedia(int handle) {
    message record = clearedRecord(MSG_MEDIA, MEDIA_END_OF_MEDIA);
    record.put(END_OF_MEDIA_HANDLE_OFFSET, handle);
    return server_->sendMessage(record);
}

bool IpcServerManager::sendDsmCCCommand(ipcutil::DsmCCCommand_t command) {
    message record = clearedRecord(MSG_DSMCC, command.commandCode);
    record.put(DSMCC_VALUE_OFFSET, command.commandValue);
    record.bytes()[DSMCC_BYTE_OFFSET] = command.commandByte;
    SendBatch batch;
    encodeChunkedText(batch, record, DSMCC_TEXT_OFFSET, DSMCC_TEXT_SIZE, command.commandText);
    std::lock_guard<std::mutex> serial(dsmccLock_);
    return server_->send(batch);
}

int IpcServerManager::setApplicationState(int state) {
    IpcServer& server = *server_;
    // Only the send touches the hub: a wait ended by destroy() returns without it.
    return AppStateReply::exchange([&server, state] {
        message record = clearedRecord(MSG_APP_STATE, state);
        return server.sendMessage(record);
    });
}

}  // namespace tessarine
