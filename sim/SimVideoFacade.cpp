#include "sim/SimVideoFacade.h"

#include <algorithm>

#include "sim/Text.h"

namespace tessarine {
namespace sim {

namespace {

std::string levelText(double value) {
    std::ostringstream text;
    text << value;
    return text.str();
}

}  // namespace

SimVideoFacade::SimVideoFacade(const VideoSettings& settings, std::vector<MediaItem> media, Scheduler& scheduler,
                               EventGate& gate, RequestLog& log)
    : settings_(settings), media_(std::move(media)), scheduler_(scheduler), gate_(gate), log_(log),
      bounds_(settings.bounds) {}

void SimVideoFacade::setMainVideoBounds(int x, int y, int width, int height) {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        bounds_ = {x, y, width, height};
    }
    log_.request(Family::Video, VIDEO_SET_BOUNDS, [&] { return "set bounds " + rectText({x, y, width, height}); });
}

void SimVideoFacade::getMainVideoBounds(int& x, int& y, int& width, int& height) {
    ipcutil::Rectangle_t bounds;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        bounds = bounds_;
    }
    x = bounds.x;
    y = bounds.y;
    width = bounds.width;
    height = bounds.height;
    log_.request(Family::Video, VIDEO_GET_BOUNDS, [&] { return "bounds -> " + rectText(bounds); });
}

std::string SimVideoFacade::getLanguage3() {
    log_.request(Family::Video, VIDEO_GET_LANGUAGE_3, [&] { return "language -> " + quoted(settings_.language3); });
    return settings_.language3;
}

std::list<std::string> SimVideoFacade::getLanguages() {
    log_.request(Family::Video, VIDEO_GET_LANGUAGES, [&] {
        return "languages -> " + countText(settings_.languages, "languages");
    });
    return settings_.languages;
}

std::string SimVideoFacade::getLanguage5() {
    log_.request(Family::Video, VIDEO_GET_LANGUAGE_5, [&] { return "language -> " + quoted(settings_.language5); });
    return settings_.language5;
}

void SimVideoFacade::setText6(std::string text) {
    log_.request(Family::Video, VIDEO_SET_TEXT_6, [&] { return "text " + quoted(text); });
    std::lock_guard<std::mutex> lock(mutex_);
    text6_ = std::move(text);
}

void SimVideoFacade::setFlag7(bool flag) {
    log_.request(Family::Video, VIDEO_SET_FLAG_7, [&] { return std::string("flag ") + (flag ? "on" : "off"); });
    std::lock_guard<std::mutex> lock(mutex_);
    flag7_ = flag;
}

void SimVideoFacade::setFlag8(bool flag) {
    log_.request(Family::Video, VIDEO_SET_FLAG_8, [&] { return std::string("flag ") + (flag ? "on" : "off"); });
    std::lock_guard<std::mutex> lock(mutex_);
    flag8_ = flag;
}

int SimVideoFacade::rate(int command) {
    const int value = settings_.rates[static_cast<std::size_t>(command - VIDEO_GET_RATE_9)];
    log_.request(Family::Video, command, [&] { return "rate -> " + std::to_string(value); });
    return value;
}

void SimVideoFacade::reset() {
    log_.request(Family::Video, VIDEO_RESET, "reset");
    std::lock_guard<std::mutex> lock(mutex_);
    bounds_ = settings_.bounds;
    audio_ = Audio{};
}

void SimVideoFacade::setLevel(Level level, int code, double value) {
    log_.request(Family::Audio, code, [&] { return "level " + levelText(value); });
    std::lock_guard<std::mutex> lock(mutex_);
    audio_.levels[level] = value;
}

void SimVideoFacade::setMute(bool mute) {
    log_.request(Family::Audio, AUDIO_MUTE, [&] { return mute ? "mute" : "unmute"; });
    std::lock_guard<std::mutex> lock(mutex_);
    audio_.mute = mute;
}

void SimVideoFacade::addGraphicsSettingsListener(middlewarefacade::GraphicsSettingsListener* listener) {
    std::lock_guard<std::mutex> lock(mutex_);
    graphicsListeners_.insert(listener);
}

void SimVideoFacade::removeGraphicsSettingsListener(middlewarefacade::GraphicsSettingsListener* listener) {
    std::lock_guard<std::mutex> lock(mutex_);
    graphicsListeners_.erase(listener);
}

void SimVideoFacade::getInitCropValue(ipcutil::Rectangle_t* first, ipcutil::Rectangle_t* second) {
    if (first != nullptr) *first = settings_.cropValues[0];
    if (second != nullptr) *second = settings_.cropValues[1];
}

void SimVideoFacade::updateGraphicsRegion(int x, int y, int width, int height) {
    log_.request(Family::Video, VIDEO_UPDATE_REGION, [&] {
        return "graphics region " + rectText({x, y, width, height});
    });
    std::lock_guard<std::mutex> lock(mutex_);
    region_ = {x, y, width, height};
}

Delivery SimVideoFacade::changeGraphics(ipcutil::Rectangle_t first, ipcutil::Rectangle_t second) {
    std::set<middlewarefacade::GraphicsSettingsListener*> listeners;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        listeners = graphicsListeners_;
    }
    if (listeners.empty()) return Delivery::NoListener;
    return gate_.pass("graphics settings change", Family::Video, VIDEO_GRAPHICS_SETTINGS,
                      "graphics settings " + rectText(first) + " " + rectText(second),
                      [&] { for (auto* listener : listeners) listener->graphicsSettingsChanged(first, second); });
}

// Media players.

SimVideoFacade::Player* SimVideoFacade::find(int handle) {
    auto it = players_.find(handle);
    return it == players_.end() ? nullptr : &it->second;
}

int SimVideoFacade::positionOf(const Player& player) const {
    if (!player.playing) return player.position;
    const auto elapsed =
        std::chrono::duration_cast<std::chrono::milliseconds>(Scheduler::Clock::now() - player.since).count();
    return static_cast<int>(std::min<long long>(player.duration, player.position + elapsed));
}

bool SimVideoFacade::open(std::string locator, int& handle) {
    auto item = std::find_if(media_.begin(), media_.end(), [&](const MediaItem& m) { return m.locator == locator; });
    if (item == media_.end()) {
        log_.request(Family::Media, MEDIA_OPEN, [&] { return "open " + quoted(locator) + " -> unknown locator"; });
        return false;
    }
    bool opened = false;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (players_.size() < MAX_PLAYERS) {
            handle = nextHandle_++;
            Player& player = players_[handle];
            player.locator = locator;
            player.duration = item->duration;
            player.endTask = scheduler_.newGroup();
            opened = true;
        }
    }
    if (!opened) {
        log_.request(Family::Media, MEDIA_OPEN, [&] {
            return "open " + quoted(locator) + " -> refused, " + std::to_string(MAX_PLAYERS) + " players open";
        });
        return false;
    }
    log_.request(Family::Media, MEDIA_OPEN, [&] {
        return "open " + quoted(locator) + " -> handle " + std::to_string(handle);
    });
    return true;
}

int SimVideoFacade::getDuration(int handle) {
    int result = -1;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (Player* player = find(handle)) result = player->duration;
    }
    log_.request(Family::Media, MEDIA_GET_DURATION, [&] {
        return "handle " + std::to_string(handle) + " duration -> " + std::to_string(result);
    });
    return result;
}

int SimVideoFacade::getCurrentTime(int handle) {
    int result = -1;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (Player* player = find(handle)) result = positionOf(*player);
    }
    log_.request(Family::Media, MEDIA_GET_CURRENT_TIME, [&] {
        return "handle " + std::to_string(handle) + " time -> " + std::to_string(result);
    });
    return result;
}

int SimVideoFacade::setCurrentTime(int handle, int first, int second) {
    int result = -1;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (Player* player = find(handle)) {
            player->position = std::max(0, std::min(first, player->duration));
            player->since = Scheduler::Clock::now();
            cancelEnd(*player);
            if (player->playing) scheduleEnd(handle, *player);
            result = player->position;
        }
    }
    log_.request(Family::Media, MEDIA_SET_CURRENT_TIME,
                 [&] { return "handle " + std::to_string(handle) + " set time " + std::to_string(first) + " (" +
                     std::to_string(second) + ") -> " + std::to_string(result); });
    return result;
}

void SimVideoFacade::addMediaListener(int handle, middlewarefacade::MediaListener* listener) {
    bool known = false;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (Player* player = find(handle)) {
            known = true;
            player->listeners.insert(listener);  // a repeated registration counts once
        }
    }
    log_.request(Family::Media, MEDIA_ADD_LISTENER, [&] {
        return "handle " + std::to_string(handle) + " listen" + (known ? "" : ": unknown handle");
    });
}

bool SimVideoFacade::play(int handle) {
    bool result = false;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (Player* player = find(handle)) {
            if (!player->playing) {
                if (player->position >= player->duration) player->position = 0;
                player->playing = true;
                player->since = Scheduler::Clock::now();
                cancelEnd(*player);
                scheduleEnd(handle, *player);
            }
            result = true;
        }
    }
    log_.request(Family::Media, MEDIA_PLAY, [&] {
        return "handle " + std::to_string(handle) + " play -> " + (result ? "playing" : "failed");
    });
    return result;
}

void SimVideoFacade::stop(int handle) {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (Player* player = find(handle)) {
            player->playing = false;
            player->position = 0;
            cancelEnd(*player);
        }
    }
    log_.request(Family::Media, MEDIA_STOP, [&] { return "handle " + std::to_string(handle) + " stop"; });
}

void SimVideoFacade::close(int handle) {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (Player* player = find(handle)) cancelEnd(*player);
        players_.erase(handle);
    }
    log_.request(Family::Media, MEDIA_CLOSE, [&] { return "handle " + std::to_string(handle) + " close"; });
}

int SimVideoFacade::setMediaBounds(int handle, int x, int y, int width, int height) {
    int result = -1;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (Player* player = find(handle)) {
            player->bounds = {x, y, width, height};
            result = 0;
        }
    }
    log_.request(Family::Media, MEDIA_SET_BOUNDS, [&] {
        return "handle " + std::to_string(handle) + " set bounds " + rectText({x, y, width, height}) + " -> " +
               std::to_string(result);
    });
    return result;
}

void SimVideoFacade::getMediaBounds(int handle, int& x, int& y, int& width, int& height) {
    std::string answer = "unknown handle";
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (Player* player = find(handle)) {
            x = player->bounds.x;
            y = player->bounds.y;
            width = player->bounds.width;
            height = player->bounds.height;
            answer = rectText(player->bounds);
        }
    }
    log_.request(Family::Media, MEDIA_GET_BOUNDS, [&] {
        return "handle " + std::to_string(handle) + " bounds -> " + answer;
    });
}

void SimVideoFacade::setMediaFreeze(int handle, bool freeze) {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (Player* player = find(handle)) player->freeze = freeze;
    }
    log_.request(Family::Media, MEDIA_SET_FREEZE, [&] {
        return "handle " + std::to_string(handle) + (freeze ? " freeze" : " unfreeze");
    });
}

void SimVideoFacade::setMediaLevel(int handle, Level level, int code, double value) {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (Player* player = find(handle)) player->audio.levels[level] = value;
    }
    log_.request(Family::Media, code, [&] {
        return "handle " + std::to_string(handle) + " level " + levelText(value);
    });
}

void SimVideoFacade::setMediaMute(int handle, bool mute) {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        if (Player* player = find(handle)) player->audio.mute = mute;
    }
    log_.request(Family::Media, MEDIA_SET_MUTE, [&] {
        return "handle " + std::to_string(handle) + (mute ? " mute" : " unmute");
    });
}

void SimVideoFacade::cancelEnd(Player& player) {
    ++player.generation;
    scheduler_.cancel(player.endTask);
}

void SimVideoFacade::scheduleEnd(int handle, Player& player) {
    const unsigned generation = player.generation;
    scheduler_.after(std::chrono::milliseconds(player.duration - player.position),
                     [this, handle, generation] { reachEnd(handle, generation); }, player.endTask);
}

void SimVideoFacade::reachEnd(int handle, unsigned generation) {
    std::set<middlewarefacade::MediaListener*> listeners;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        Player* player = find(handle);
        // A stop, seek or close since the end was scheduled made it stale.
        if (player == nullptr || !player->playing || player->generation != generation) return;
        player->playing = false;
        player->position = player->duration;
        listeners = player->listeners;
    }
    deliverEnd(handle, listeners);
}

bool SimVideoFacade::endMedium(int handle) {
    std::set<middlewarefacade::MediaListener*> listeners;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        Player* player = find(handle);
        if (player == nullptr) return false;
        player->playing = false;
        player->position = player->duration;
        cancelEnd(*player);
        listeners = player->listeners;
    }
    deliverEnd(handle, listeners);
    return true;
}

void SimVideoFacade::deliverEnd(int handle, const std::set<middlewarefacade::MediaListener*>& listeners) {
    if (listeners.empty()) {
        log_.note("end of media for handle " + std::to_string(handle) + ": no listener");
        return;
    }
    gate_.pass("end of media for handle " + std::to_string(handle), Family::Media, MEDIA_END_OF_MEDIA,
               "end of media, handle " + std::to_string(handle),
               [&] { for (auto* listener : listeners) listener->endOfMedia(handle); });
}

std::vector<std::string> SimVideoFacade::describePlayers() {
    std::lock_guard<std::mutex> lock(mutex_);
    std::vector<std::string> lines;
    for (const auto& entry : players_) {
        const Player& p = entry.second;
        std::ostringstream line;
        line << "player " << entry.first << ' ' << quoted(p.locator) << ' ' << (p.playing ? "playing" : "stopped")
             << ' ' << positionOf(p) << '/' << p.duration << " ms, bounds " << rectText(p.bounds)
             << (p.freeze ? ", frozen" : "") << ", sound " << p.audio.levels[SOUND] << ", balance "
             << p.audio.levels[BALANCE] << ", bass " << p.audio.levels[BASS] << ", treble "
             << p.audio.levels[TREBLE] << (p.audio.mute ? ", muted" : "") << ", " << p.listeners.size()
             << " listener(s)";
        lines.push_back(line.str());
    }
    return lines;
}

}  // namespace sim
}  // namespace tessarine
