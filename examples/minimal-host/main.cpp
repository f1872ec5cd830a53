// The least a middleware does to host the bridge: define the eight facade
// factories (all but one return null, so those requests get the bridge's
// defaults), start the adapter, and keep it until told to stop.
#include <csignal>
#include <cstdio>

#include <MiddlewareIpc.h>
#include <tessarine/IpcServerManager.h>

namespace middlewarefacade {
// This receiver's one facade: it knows version flag 1.
struct Version : VersionFacade {
    int checkVersionFlag(int flag) override { return flag == 1 ? 1 : 0; }
};
// The host owns its facades; the bridge only uses them.
VersionFacade* VersionFacade::createVersionFacade() {
    static Version version;
    return &version;
}
VideoFacade* VideoFacade::createVideoFacade() { return nullptr; }
PropertyFacade* PropertyFacade::createPropertyFacade() { return nullptr; }
SIFacade* SIFacade::createSIFacade() { return nullptr; }
CarouselFacade* CarouselFacade::createCarouselFacade() { return nullptr; }
DemuxFacade* DemuxFacade::createDemuxFacade() { return nullptr; }
TunerFacade* TunerFacade::createTunerFacade() { return nullptr; }
DsmCCCommandFacade* DsmCCCommandFacade::createDsmCCCommandFacade() { return nullptr; }
}  // namespace middlewarefacade

int main(int argc, char** argv) {
    // A directory other than /dev/shm is for trying it out beside a real receiver.
    if (argc > 1 && !tessarine::IpcServerManager::setSocketDirectory(argv[1])) return 2;
    sigset_t stop;
    sigemptyset(&stop);
    sigaddset(&stop, SIGINT);
    sigaddset(&stop, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &stop, nullptr);  // before the bridge's threads exist, so they inherit it
    MiddlewareIpc* adapter = MiddlewareIpc::getInstance();
    std::puts("serving");
    std::fflush(stdout);
    int signal = 0;
    sigwait(&stop, &signal);
    delete adapter;
    return 0;
}
