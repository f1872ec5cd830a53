// Records the hub sends on its own initiative, and the application-state request.
#include <cstring>

#include "hub/AppStateReply.h"
#include "tessarine/IpcServerManager.h"
#include "tessarine/TextField.h"
#include "transport/ChunkedText.h"

namespace tessarine {

namespace {

constexpr std::int32_t DOWNLOAD_COMPLETE = 2;
constexpr std::int32_t END_OF_MEDIA = 16;
constexpr std::size_t FIRST_RECTANGLE = 12, SECOND_RECTANGLE = 28;
constexpr std::size_t HANDLE = 12;
constexpr std::size_t DSMCC_VALUE = 16, DSMCC_BYTE = 24;
constexpr std::size_t DSMCC_TEXT = 25, DSMCC_TEXT_SIZE = 1928;  // bytes 25-1952

message clearedRecord(std::int32_t type, std::int32_t code) {
    message record;
    record.clear();
    record.type = type;
    record.code = code;
    return record;
}

}  // namespace

bool IpcServerManager::downloadComplete(std::string first, std::string second) {
    message record = clearedRecord(MSG_CAROUSEL, DOWNLOAD_COMPLETE);
    writeTextField(record, FIRST_TEXT_OFFSET, first);
    writeTextField(record, SECOND_TEXT_OFFSET, second);
    return server_->sendMessage(record);
}

bool IpcServerManager::changeGraphicsSettings(ipcutil::Rectangle_t first, ipcutil::Rectangle_t second) {
    message record = clearedRecord(MSG_VIDEO, VIDEO_GRAPHICS_SETTINGS);
    record.put(FIRST_RECTANGLE, first);
    record.put(SECOND_RECTANGLE, second);
    return server_->sendMessage(record);
}

bool IpcServerManager::endOfMedia(int handle) {
    message record = clearedRecord(MSG_MEDIA, END_OF_MEDIA);
    record.put(HANDLE, handle);
    return server_->sendMessage(record);
}

bool IpcServerManager::sendDsmCCCommand(ipcutil::DsmCCCommand_t command) {
    message record = clearedRecord(MSG_DSMCC, command.commandCode);
    record.put(DSMCC_VALUE, command.commandValue);
    record.bytes()[DSMCC_BYTE] = command.commandByte;
    SendBatch batch;
    encodeChunkedText(batch, record, DSMCC_TEXT, DSMCC_TEXT_SIZE, command.commandText);
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
