#pragma once

#include <list>
#include <string>

#include "ipcutil/Rectangle_t.h"
#include "middlewarefacade/FacadeExport.h"
#include "middlewarefacade/GraphicsSettingsListener.h"
#include "middlewarefacade/MediaListener.h"

namespace middlewarefacade {

// The host's video facade: main video, audio, graphics and media players.
// The bridge calls it by virtual slot, so each operation's position (in the
// comment) is the binary contract; no virtual destructor, which would take
// slots. The host defines createVideoFacade().
class MIDDLEWAREFACADE_API VideoFacade {
public:
    static VideoFacade* createVideoFacade();

    virtual void setMainVideoBounds(int x, int y, int width, int height) = 0;          // 0
    virtual void getMainVideoBounds(int& x, int& y, int& width, int& height) = 0;      // 1
    virtual bool open(std::string locator, int& handle) = 0;                           // 2
    virtual int getDuration(int handle) = 0;                                           // 3
    virtual int getCurrentTime(int handle) = 0;                                        // 4
    virtual int setCurrentTime(int handle, int first, int second) = 0;                 // 5
    virtual void addMediaListener(int handle, MediaListener* listener) = 0;            // 6
    virtual bool play(int handle) = 0;                                                 // 7
    virtual void stop(int handle) = 0;                                                 // 8
    virtual void close(int handle) = 0;                                                // 9
    virtual int setMediaBounds(int handle, int x, int y, int width, int height) = 0;   // 10
    virtual void getMediaBounds(int handle, int& x, int& y, int& width, int& height) = 0;  // 11
    virtual std::string getLanguage3() = 0;                                            // 12
    virtual std::list<std::string> getLanguages() = 0;                                 // 13
    virtual std::string getLanguage5() = 0;                                            // 14
    virtual void setText6(std::string text) = 0;                                       // 15
    virtual void setFlag7(bool flag) = 0;                                              // 16
    virtual void setMediaFreeze(int handle, bool freeze) = 0;                          // 17
    virtual void setFlag8(bool flag) = 0;                                              // 18
    virtual int getRate9() = 0;                                                        // 19
    virtual int getRate10() = 0;                                                       // 20
    virtual int getRate11() = 0;                                                       // 21
    virtual int getRate12() = 0;                                                       // 22
    virtual int getRate13() = 0;                                                       // 23
    virtual int getRate14() = 0;                                                       // 24
    virtual int getRate15() = 0;                                                       // 25
    virtual int getRate16() = 0;                                                       // 26
    virtual void reset() = 0;                                                          // 27
    virtual void setBalanceLevel(double level) = 0;                                    // 28
    virtual void setMediaBalanceLevel(int handle, double level) = 0;                   // 29
    virtual void setSoundLevel(double level) = 0;                                      // 30
    virtual void setMediaSoundLevel(int handle, double level) = 0;                     // 31
    virtual void setMute(bool mute) = 0;                                               // 32
    virtual void setMediaMute(int handle, bool mute) = 0;                              // 33
    virtual void setBassLevel(double level) = 0;                                       // 34
    virtual void setMediaBassLevel(int handle, double level) = 0;                      // 35
    virtual void setTrebleLevel(double level) = 0;                                     // 36
    virtual void setMediaTrebleLevel(int handle, double level) = 0;                    // 37
    virtual void addGraphicsSettingsListener(GraphicsSettingsListener* listener) = 0;  // 38
    virtual void removeGraphicsSettingsListener(GraphicsSettingsListener* listener) = 0;  // 39
    virtual void getInitCropValue(ipcutil::Rectangle_t* first, ipcutil::Rectangle_t* second) = 0;  // 40
    virtual void updateGraphicsRegion(int x, int y, int width, int height) = 0;        // 41
    virtual void reserved42() = 0;                                                     // 42, never called
    virtual void release() = 0;                                                        // 43

protected:
    ~VideoFacade() = default;
};

}  // namespace middlewarefacade
