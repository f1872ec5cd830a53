// A minimal host: defines the facade factories (no facades at all), brings
// the bridge up, asks it one question through the control socket, and
// deletes the adapter.
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <string>

#include <MiddlewareIpc.h>
#include <tessarine/IpcServerManager.h>

namespace middlewarefacade {
VideoFacade* VideoFacade::createVideoFacade() { return nullptr; }
PropertyFacade* PropertyFacade::createPropertyFacade() { return nullptr; }
SIFacade* SIFacade::createSIFacade() { return nullptr; }
CarouselFacade* CarouselFacade::createCarouselFacade() { return nullptr; }
DemuxFacade* DemuxFacade::createDemuxFacade() { return nullptr; }
TunerFacade* TunerFacade::createTunerFacade() { return nullptr; }
DsmCCCommandFacade* DsmCCCommandFacade::createDsmCCCommandFacade() { return nullptr; }
VersionFacade* VersionFacade::createVersionFacade() { return nullptr; }
}  // namespace middlewarefacade

int main(int argc, char** argv) {
    if (argc != 2 || !tessarine::IpcServerManager::setSocketDirectory(argv[1])) return 2;
    MiddlewareIpc* adapter = MiddlewareIpc::getInstance();
    if (adapter == nullptr || adapter != MiddlewareIpc::getInstance()) return 3;

    // A version check without a version facade is answered with 0.
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::snprintf(address.sun_path, sizeof address.sun_path, "%s/ipc.socket", argv[1]);
    const int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
    if (::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) return 4;
    tessarine::message record;
    record.clear();
    record.type = tessarine::MSG_VERSION;
    record.code = 3;
    record.bytes()[12] = 0x5a;
    if (::send(fd, record.bytes(), tessarine::MESSAGE_SIZE, 0) != static_cast<ssize_t>(tessarine::MESSAGE_SIZE)) return 5;
    if (::recv(fd, record.bytes(), tessarine::MESSAGE_SIZE, MSG_WAITALL) != static_cast<ssize_t>(tessarine::MESSAGE_SIZE))
        return 6;
    ::close(fd);
    if (record.type != tessarine::MSG_VERSION || record.bytes()[12] != 0) return 7;

    delete adapter;
    std::puts("consumer ok");
    return 0;
}
