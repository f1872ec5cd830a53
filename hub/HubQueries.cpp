// The hub's query operations: each asks the request listeners by its rule.
#include "hub/FanOut.h"
#include "tessarine/IpcServerManager.h"

namespace tessarine {

using Listener = IpcServerListener;

void IpcServerManager::getMainVideoBounds(int& x, int& y, int& width, int& height) {
    // Not preset: the values start as the caller had them.
    requestListeners().untilDone([&](Listener& l) {
        l.getMainVideoBounds(x, y, width, height);
        return x != -1 && y != -1 && width != -1 && height != -1;
    });
}

std::string IpcServerManager::getVideoLanguage(command code) {
    return requestListeners().firstNonEmpty([code](Listener& l) { return l.getVideoLanguage(code); });
}

std::list<std::string> IpcServerManager::getVideoLanguages() {
    return requestListeners().firstNonEmpty([](Listener& l) { return l.getVideoLanguages(); });
}

int IpcServerManager::getVideoRate(command code) {
    return requestListeners().firstValid([code](Listener& l) { return l.getVideoProperty(code); });
}

std::string IpcServerManager::getSystemProperty(std::string name) {
    return requestListeners().firstNonEmpty([&name](Listener& l) { return l.getSystemProperty(name); });
}

std::list<system_property> IpcServerManager::getSystemProperties() {
    return requestListeners().firstNonEmpty([](Listener& l) { return l.getSystemProperties(); });
}

int IpcServerManager::getCurrentTransportStreamID() {
    return requestListeners().firstValid([](Listener& l) { return l.getCurrentTransportStreamID(); });
}

std::list<int> IpcServerManager::getAllIDs(tuner_data& data) {
    return requestListeners().firstNonEmpty([&data](Listener& l) { return l.getAllIDs(data); });
}

std::string IpcServerManager::getChannelName(int first, int second) {
    return requestListeners().firstNonEmpty([=](Listener& l) { return l.getChannelName(first, second); });
}

int IpcServerManager::getVirtualChannelNumber(int first, int second) {
    return requestListeners().firstValid([=](Listener& l) { return l.getVirtualChannelNumber(first, second); });
}

std::string IpcServerManager::mountCarousel(std::string name) {
    return requestListeners().firstNonEmpty([&name](Listener& l) { return l.mountCarousel(name); });
}

void IpcServerManager::umountCarousel(std::string name) {
    requestListeners().all([&name](Listener& l) { l.umountCarousel(name); });
}

std::string IpcServerManager::getSICodingFormat() {
    return requestListeners().firstNonEmpty([](Listener& l) { return l.getSICodingFormat(); });
}

std::list<program_event> IpcServerManager::getProgramEvents() {
    return requestListeners().firstNonEmpty([](Listener& l) { return l.getProgramEvents(); });
}

program_event IpcServerManager::getProgramEvent() {
    return requestListeners().firstComplete(&program_event::value1, [](Listener& l) { return l.getProgramEvent(); });
}

std::list<service> IpcServerManager::getServices() {
    return requestListeners().firstNonEmpty([](Listener& l) { return l.getServices(); });
}

int IpcServerManager::getCurrentService() {
    return requestListeners().firstValid([](Listener& l) { return l.getCurrentService(); });
}

std::list<int> IpcServerManager::getCASystemIds() {
    return requestListeners().firstNonEmpty([](Listener& l) { return l.getCASystemIds(); });
}

bool IpcServerManager::isProtectedService() {
    return requestListeners().firstTrue([](Listener& l) { return l.isProtectedService(); });
}

std::string IpcServerManager::getServiceDescription() {
    return requestListeners().firstNonEmpty([](Listener& l) { return l.getServiceDescription(); });
}

std::list<service_component> IpcServerManager::getServiceComponents(int id) {
    return requestListeners().firstNonEmpty([id](Listener& l) { return l.getServiceComponents(id); });
}

transport_stream IpcServerManager::getTransportStream() {
    return requestListeners().firstComplete(&transport_stream::value1,
                                            [](Listener& l) { return l.getTransportStream(); });
}

network IpcServerManager::getNetwork() {
    return requestListeners().firstComplete(&network::value0, [](Listener& l) { return l.getNetwork(); });
}

std::list<descriptor> IpcServerManager::getNetworkDescriptors() {
    return requestListeners().firstNonEmpty([](Listener& l) { return l.getNetworkDescriptors(); });
}

std::list<descriptor> IpcServerManager::getTransportStreamDescriptors(int id) {
    return requestListeners().firstNonEmpty([id](Listener& l) { return l.getTransportStreamDescriptors(id); });
}

std::list<descriptor> IpcServerManager::getServiceDescriptors(int id) {
    return requestListeners().firstNonEmpty([id](Listener& l) { return l.getServiceDescriptors(id); });
}

std::list<descriptor> IpcServerManager::getProgramEventDescriptors(int first, int second) {
    return requestListeners().firstNonEmpty(
        [=](Listener& l) { return l.getProgramEventDescriptors(first, second); });
}

std::list<descriptor> IpcServerManager::getServiceComponentDescriptors(int id) {
    return requestListeners().firstNonEmpty([id](Listener& l) { return l.getServiceComponentDescriptors(id); });
}

std::list<pmt> IpcServerManager::getPMTs(int id) {
    return requestListeners().firstNonEmpty([id](Listener& l) { return l.getPMTs(id); });
}

bool IpcServerManager::open(std::string locator, int& handle) {
    // Each listener gets its own copy of the locator and the same handle.
    return requestListeners().firstTrue([&](Listener& l) { return l.open(locator, handle); });
}

int IpcServerManager::getDuration(int handle) {
    return requestListeners().firstValid([handle](Listener& l) { return l.getDuration(handle); });
}

int IpcServerManager::getCurrentTime(int handle) {
    return requestListeners().firstValid([handle](Listener& l) { return l.getCurrentTime(handle); });
}

int IpcServerManager::setCurrentTime(int handle, int first, int second) {
    return requestListeners().firstValid([=](Listener& l) { return l.setCurrentTime(handle, first, second); });
}

void IpcServerManager::addMediaListener(int handle) {
    requestListeners().all([handle](Listener& l) { l.addMediaListener(handle); });
}

bool IpcServerManager::play(int handle) {
    return requestListeners().firstTrue([handle](Listener& l) { return l.play(handle); });
}

void IpcServerManager::stop(int handle) {
    requestListeners().all([handle](Listener& l) { l.stop(handle); });
}

void IpcServerManager::close(int handle) {
    requestListeners().all([handle](Listener& l) { l.close(handle); });
}

int IpcServerManager::setMediaBounds(int handle, int x, int y, int width, int height) {
    return requestListeners().firstValid([=](Listener& l) { return l.setMediaBounds(handle, x, y, width, height); });
}

void IpcServerManager::getMediaBounds(int handle, int& x, int& y, int& width, int& height) {
    requestListeners().all([&](Listener& l) { l.getMediaBounds(handle, x, y, width, height); });
}

void IpcServerManager::setMediaFreeze(int handle, bool freeze) {
    requestListeners().all([=](Listener& l) { l.setMediaFreeze(handle, freeze); });
}

void IpcServerManager::setMediaBalanceLevel(int handle, double level) {
    requestListeners().all([=](Listener& l) { l.setMediaBalanceLevel(handle, level); });
}

void IpcServerManager::setMediaSoundLevel(int handle, double level) {
    requestListeners().all([=](Listener& l) { l.setMediaSoundLevel(handle, level); });
}

void IpcServerManager::setMediaMute(int handle, bool mute) {
    requestListeners().all([=](Listener& l) { l.setMediaMute(handle, mute); });
}

void IpcServerManager::setMediaBassLevel(int handle, double level) {
    requestListeners().all([=](Listener& l) { l.setMediaBassLevel(handle, level); });
}

void IpcServerManager::setMediaTrebleLevel(int handle, double level) {
    requestListeners().all([=](Listener& l) { l.setMediaTrebleLevel(handle, level); });
}

int IpcServerManager::checkVersionFlag(int flag) {
    return requestListeners().firstTrue([flag](Listener& l) { return l.checkVersionFlag(flag); });
}

}  // namespace tessarine
