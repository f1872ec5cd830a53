#pragma once

#include <array>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "middlewarefacade/VideoFacade.h"
#include "sim/EventGate.h"
#include "sim/RequestLog.h"
#include "sim/Scenario.h"
#include "sim/Scheduler.h"

namespace tessarine {
namespace sim {

// Main video, audio, graphics plane and media players of the simulated
// receiver. Settings are remembered and reported back; media play in real
// time (milliseconds) and end with endOfMedia on the scheduler's thread.
class SimVideoFacade final : public middlewarefacade::VideoFacade {
public:
    // Players open at once; a further open is refused until one closes, so
    // an application that never closes cannot grow the simulator without
    // end (a receiver has a handful of decoders).
    static constexpr std::size_t MAX_PLAYERS = 64;

    SimVideoFacade(const VideoSettings& settings, std::vector<MediaItem> media, Scheduler& scheduler,
                   EventGate& gate, RequestLog& log);

    // Sends a graphics-plane change to every graphics listener.
    Delivery changeGraphics(ipcutil::Rectangle_t first, ipcutil::Rectangle_t second);
    // Ends the medium of `handle` now, as if it had reached its end; false
    // for an unknown handle.
    bool endMedium(int handle);
    // One line per open player, for the console's status.
    std::vector<std::string> describePlayers();

    void setMainVideoBounds(int x, int y, int width, int height) override;
    void getMainVideoBounds(int& x, int& y, int& width, int& height) override;
    bool open(std::string locator, int& handle) override;
    int getDuration(int handle) override;
    int getCurrentTime(int handle) override;
    int setCurrentTime(int handle, int first, int second) override;
    void addMediaListener(int handle, middlewarefacade::MediaListener* listener) override;
    bool play(int handle) override;
    void stop(int handle) override;
    void close(int handle) override;
    int setMediaBounds(int handle, int x, int y, int width, int height) override;
    void getMediaBounds(int handle, int& x, int& y, int& width, int& height) override;
    std::string getLanguage3() override;
    std::list<std::string> getLanguages() override;
    std::string getLanguage5() override;
    void setText6(std::string text) override;
    void setFlag7(bool flag) override;
    void setMediaFreeze(int handle, bool freeze) override;
    void setFlag8(bool flag) override;
    int getRate9() override { return rate(VIDEO_GET_RATE_9); }
    int getRate10() override { return rate(VIDEO_GET_RATE_10); }
    int getRate11() override { return rate(VIDEO_GET_RATE_11); }
    int getRate12() override { return rate(VIDEO_GET_RATE_12); }
    int getRate13() override { return rate(VIDEO_GET_RATE_13); }
    int getRate14() override { return rate(VIDEO_GET_RATE_14); }
    int getRate15() override { return rate(VIDEO_GET_RATE_15); }
    int getRate16() override { return rate(VIDEO_GET_RATE_16); }
    void reset() override;
    void setBalanceLevel(double level) override { setLevel(BALANCE, AUDIO_BALANCE_LEVEL, level); }
    void setMediaBalanceLevel(int handle, double level) override { setMediaLevel(handle, BALANCE, MEDIA_SET_BALANCE_LEVEL, level); }
    void setSoundLevel(double level) override { setLevel(SOUND, AUDIO_SOUND_LEVEL, level); }
    void setMediaSoundLevel(int handle, double level) override { setMediaLevel(handle, SOUND, MEDIA_SET_SOUND_LEVEL, level); }
    void setMute(bool mute) override;
    void setMediaMute(int handle, bool mute) override;
    void setBassLevel(double level) override { setLevel(BASS, AUDIO_BASS_LEVEL, level); }
    void setMediaBassLevel(int handle, double level) override { setMediaLevel(handle, BASS, MEDIA_SET_BASS_LEVEL, level); }
    void setTrebleLevel(double level) override { setLevel(TREBLE, AUDIO_TREBLE_LEVEL, level); }
    void setMediaTrebleLevel(int handle, double level) override { setMediaLevel(handle, TREBLE, MEDIA_SET_TREBLE_LEVEL, level); }
    void addGraphicsSettingsListener(middlewarefacade::GraphicsSettingsListener* listener) override;
    void removeGraphicsSettingsListener(middlewarefacade::GraphicsSettingsListener* listener) override;
    void getInitCropValue(ipcutil::Rectangle_t* first, ipcutil::Rectangle_t* second) override;
    void updateGraphicsRegion(int x, int y, int width, int height) override;
    void reserved42() override {}
    // The simulator owns the facade; the bridge's release ends nothing.
    void release() override {}

private:
    enum Level { SOUND, BALANCE, BASS, TREBLE, LEVEL_COUNT };

    struct Audio {
        std::array<double, LEVEL_COUNT> levels{{1.0, 0.0, 0.0, 0.0}};
        bool mute = false;
    };

    struct Player {
        std::string locator;
        int duration = 0;
        int position = 0;  // at `since` when playing
        bool playing = false;
        Scheduler::Clock::time_point since;
        unsigned generation = 0;  // bumped to cancel a scheduled end
        Scheduler::Group endTask = Scheduler::NO_GROUP;
        ipcutil::Rectangle_t bounds{0, 0, 0, 0};
        bool freeze = false;
        Audio audio;
        std::set<middlewarefacade::MediaListener*> listeners;
    };

    int rate(int command);
    void setLevel(Level level, int code, double value);
    void setMediaLevel(int handle, Level level, int code, double value);
    Player* find(int handle);
    int positionOf(const Player& player) const;
    void scheduleEnd(int handle, Player& player);
    // Makes a scheduled end stale and drops it from the queue.
    void cancelEnd(Player& player);
    void reachEnd(int handle, unsigned generation);
    void deliverEnd(int handle, const std::set<middlewarefacade::MediaListener*>& listeners);

    const VideoSettings settings_;
    const std::vector<MediaItem> media_;
    Scheduler& scheduler_;
    EventGate& gate_;
    RequestLog& log_;

    std::mutex mutex_;
    ipcutil::Rectangle_t bounds_;
    ipcutil::Rectangle_t region_{0, 0, 0, 0};
    std::string text6_;
    bool flag7_ = false;
    bool flag8_ = false;
    Audio audio_;
    std::set<middlewarefacade::GraphicsSettingsListener*> graphicsListeners_;
    std::map<int, Player> players_;
    int nextHandle_ = 1;
};

}  // namespace sim
}  // namespace tessarine
