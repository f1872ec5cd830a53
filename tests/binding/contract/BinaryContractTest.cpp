// A host compiled from its own declaration of the shared interface
// (HostDeclarations.h, no library header) links the shared library. The
// library must call every facade operation by its slot with the right
// values, read the host's records field by field, and the host's calls of
// the listener bases must reach the application through the socket.
#include <gtest/gtest.h>
#include <poll.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <functional>
#include <mutex>

#include "HostDeclarations.h"

using namespace middlewarefacade;

namespace {

// ---- What the host's facades were asked, in order ----
std::mutex journalLock;
std::vector<std::string> journal;

std::string arg(int v) { return std::to_string(v); }
std::string arg(long v) { return std::to_string(v) + "L"; }
std::string arg(bool v) { return v ? "true" : "false"; }
std::string arg(double v) {
    char text[40];
    std::snprintf(text, sizeof text, "%a", v);
    return text;
}
std::string arg(const std::string& v) { return "'" + v + "'"; }
std::string arg(const Bytes& v) {
    std::string text;
    for (unsigned char b : v) text += std::to_string(b) + ".";
    return text;
}
std::string arg(const void* p) { return p ? "listener" : "null"; }

template <typename... Args>
void note(const char* operation, const Args&... args) {
    std::string text = std::string(operation) + "(";
    bool first = true;
    ((text += (first ? "" : ",") + arg(args), first = false), ...);
    std::lock_guard<std::mutex> lock(journalLock);
    journal.push_back(text + ")");
}
std::vector<std::string> takeJournal() {
    std::lock_guard<std::mutex> lock(journalLock);
    std::vector<std::string> taken;
    for (auto& entry : journal)
        if (entry.rfind("checkVersionFlag(0)", 0) != 0) taken.push_back(entry);  // fences
    journal.clear();
    return taken;
}

// ---- The host's facades: distinct answers, so a swapped slot shows ----
GraphicsSettingsListener* graphicsListener = nullptr;
MediaListener* mediaListener = nullptr;
CarouselListener* carouselListener = nullptr;
DsmCCCommandListener* commandListener = nullptr;
const void* registeredGraphics = nullptr;  // as passed, to compare with what is removed
const void* registeredCommands = nullptr;

struct HostVideo final : VideoFacade {
    void setMainVideoBounds(int x, int y, int w, int h) override { note("setMainVideoBounds", x, y, w, h); }
    void getMainVideoBounds(int& x, int& y, int& w, int& h) override { note("getMainVideoBounds"), x = 1, y = 2, w = 3, h = 4; }
    bool open(std::string l, int& h) override { return note("open", l, h), h = 55, true; }
    int getDuration(int h) override { return note("getDuration", h), 103; }
    int getCurrentTime(int h) override { return note("getCurrentTime", h), 104; }
    int setCurrentTime(int h, int a, int b) override { return note("setCurrentTime", h, a, b), 105; }
    void addMediaListener(int h, MediaListener* l) override { note("addMediaListener", h, l), mediaListener = l; }
    bool play(int h) override { return note("play", h), true; }
    void stop(int h) override { note("stop", h); }
    void close(int h) override { note("close", h); }
    int setMediaBounds(int h, int x, int y, int w, int hh) override { return note("setMediaBounds", h, x, y, w, hh), 110; }
    void getMediaBounds(int h, int& x, int& y, int& w, int& hh) override { note("getMediaBounds", h), x = 11, y = 12, w = 13, hh = 14; }
    std::string getLanguage3() override { return note("getLanguage3"), "lang3"; }
    std::list<std::string> getLanguages() override { return note("getLanguages"), std::list<std::string>{"a", "b"}; }
    std::string getLanguage5() override { return note("getLanguage5"), "lang5"; }
    void setText6(std::string t) override { note("setText6", t); }
    void setFlag7(bool f) override { note("setFlag7", f); }
    void setMediaFreeze(int h, bool f) override { note("setMediaFreeze", h, f); }
    void setFlag8(bool f) override { note("setFlag8", f); }
    int getRate9() override { return note("getRate9"), 109; }
    int getRate10() override { return note("getRate10"), 110; }
    int getRate11() override { return note("getRate11"), 111; }
    int getRate12() override { return note("getRate12"), 112; }
    int getRate13() override { return note("getRate13"), 113; }
    int getRate14() override { return note("getRate14"), 114; }
    int getRate15() override { return note("getRate15"), 115; }
    int getRate16() override { return note("getRate16"), 116; }
    void reset() override { note("reset"); }
    void setBalanceLevel(double v) override { note("setBalanceLevel", v); }
    void setMediaBalanceLevel(int h, double v) override { note("setMediaBalanceLevel", h, v); }
    void setSoundLevel(double v) override { note("setSoundLevel", v); }
    void setMediaSoundLevel(int h, double v) override { note("setMediaSoundLevel", h, v); }
    void setMute(bool m) override { note("setMute", m); }
    void setMediaMute(int h, bool m) override { note("setMediaMute", h, m); }
    void setBassLevel(double v) override { note("setBassLevel", v); }
    void setMediaBassLevel(int h, double v) override { note("setMediaBassLevel", h, v); }
    void setTrebleLevel(double v) override { note("setTrebleLevel", v); }
    void setMediaTrebleLevel(int h, double v) override { note("setMediaTrebleLevel", h, v); }
    void addGraphicsSettingsListener(GraphicsSettingsListener* l) override {
        note("addGraphicsSettingsListener", l), graphicsListener = l, registeredGraphics = l;
    }
    void removeGraphicsSettingsListener(GraphicsSettingsListener* l) override {
        note("removeGraphicsSettingsListener", std::string(l == registeredGraphics ? "same" : "other"));
    }
    void getInitCropValue(ipcutil::Rectangle_t* a, ipcutil::Rectangle_t* b) override {
        note("getInitCropValue"), *a = {1, 2, 3, 4}, *b = {5, 6, 7, 8};
    }
    void updateGraphicsRegion(int x, int y, int w, int h) override { note("updateGraphicsRegion", x, y, w, h); }
    void hostOnly42() override { note("hostOnly42"); }
    void release() override { note("video.release"); }
} video;

struct HostProperty final : PropertyFacade {
    void setProperty(std::string n, std::string v) override { note("setProperty", n, v); }
    std::string getProperty(std::string n) override { return note("getProperty", n), "value-of-" + n; }
    std::list<Property_> getProperties() override { return note("getProperties"), std::list<Property_>{{"n1", "v1"}}; }
    void removeProperty(std::string n) override { note("removeProperty", n); }
    void hostOnly4() override { note("hostOnly4"); }
    void release() override { note("property.release"); }
} property;

Descriptors_ descriptor{0x4d, {7, 8, 9}};
struct HostSI final : SIFacade {
    Network_ getNetwork() override { return note("getNetwork"), Network_{"net", 31}; }
    std::list<Descriptors_> getNetworkDescriptors() override { return note("getNetworkDescriptors"), std::list<Descriptors_>{descriptor}; }
    TransportStream_ getTransportStream() override { return note("getTransportStream"), TransportStream_{41, 42, "x", 99, 44, 2, 43}; }
    std::list<Descriptors_> getTransportStreamDescriptors(int i) override { return note("getTransportStreamDescriptors", i), std::list<Descriptors_>{descriptor}; }
    std::list<Service_> getServices() override { return note("getServices"), std::list<Service_>{{51, 52, 53, "svc", 54, 55, "y"}}; }
    int getCurrentService() override { return note("getCurrentService"), 56; }
    std::list<Descriptors_> getServiceDescriptors(int i) override { return note("getServiceDescriptors", i), std::list<Descriptors_>{}; }
    std::list<ProgramEvent_> getProgramEvents() override { return note("getProgramEvents"), std::list<ProgramEvent_>{}; }
    ProgramEvent_ getProgramEvent() override {
        note("getProgramEvent");
        return {61, 62, 63, 64, "t0", "t1", "t2", 99, 65, 66, 67, {1}, {2, 2}, {3, 3, 3}, {"s"}, {}, {"u", "v"}};
    }
    std::list<Descriptors_> getProgramEventDescriptors(int a, int b) override { return note("getProgramEventDescriptors", a, b), std::list<Descriptors_>{descriptor}; }
    std::list<ServiceComponent_> getServiceComponents(int i) override { return note("getServiceComponents", i), std::list<ServiceComponent_>{{71, 72, 73, 74, 75, 76}}; }
    std::list<Descriptors_> getServiceComponentDescriptors(int i) override { return note("getServiceComponentDescriptors", i), std::list<Descriptors_>{descriptor}; }
    std::list<PMT_> getPMTs(int i) override { return note("getPMTs", i), std::list<PMT_>{{81, 82, 83, 84}}; }
    std::string getSICodingFormat() override { return note("getSICodingFormat"), "fmt"; }
    std::list<int> getCASystemIds() override { return note("getCASystemIds"), std::list<int>{91}; }
    bool isProtectedService() override { return note("isProtectedService"), true; }
    std::string getServiceDescription() override { return note("getServiceDescription"), "desc"; }
    void hostOnly17() override { note("hostOnly17"); }
    void release() override { note("si.release"); }
} si;

struct HostCarousel final : CarouselFacade {
    std::string mount(std::string n) override { return note("mount", n), "mounted"; }
    void umount(std::string n) override { note("umount", n); }
    void addCarouselListener(CarouselListener* l) override { note("addCarouselListener", l), carouselListener = l; }
    void removeCarouselListener(CarouselListener* l) override { note("removeCarouselListener", l); }
    void hostOnly4() override { note("hostOnly4"); }
    void release() override { note("carousel.release"); }
} carousel;

struct HostDemux final : DemuxFacade {
    void start() override { note("start"); }
    void stop() override { note("stop"); }
    void set_pid(int v) override { note("set_pid", v); }
    void set_table_id(int v) override { note("set_table_id", v); }
    void set_positive_filter(int v, const Bytes& a, const Bytes& b) override { note("set_positive_filter", v, a, b); }
    void set_greater_than_filter(int v, const Bytes& a, const Bytes& b) override { note("set_greater_than_filter", v, a, b); }
    void set_less_than_filter(int v, const Bytes& a, const Bytes& b) override { note("set_less_than_filter", v, a, b); }
    void set_xor_filter(int v, const Bytes& a, const Bytes& b, const Bytes& c) override { note("set_xor_filter", v, a, b, c); }
    void set_time_out(long t) override { note("set_time_out", t); }
    void clear_table_id() override { note("clear_table_id"); }
    void clear_positive_filter() override { note("clear_positive_filter"); }
    void clear_less_than_filter() override { note("clear_less_than_filter"); }
    void clear_xor_filter() override { note("clear_xor_filter"); }
    Bytes read_section() override { return note("read_section"), Bytes{0xca, 0xfe}; }
    void hostOnly14() override { note("hostOnly14"); }
    void release() override { note("demux.release"); }
} demux;

struct HostTuner final : TunerFacade {
    int getCurrentTransportStreamID() override { return note("getCurrentTransportStreamID"), 120; }
    std::list<int> getIds2() override { return note("getIds2"), std::list<int>{122}; }
    std::list<int> getIds1(int p) override { return note("getIds1", p), std::list<int>{121}; }
    std::string getChannelName(int a, int b) override { return note("getChannelName", a, b), "ch"; }
    int getVirtualChannelNumber(int a, int b) override { return note("getVirtualChannelNumber", a, b), 124; }
    std::list<int> getIds3(int p) override { return note("getIds3", p), std::list<int>{123}; }
    std::list<int> getIds4(int p) override { return note("getIds4", p), std::list<int>{124}; }
    void hostOnly7() override { note("hostOnly7"); }
    void release() override { note("tuner.release"); }
} tuner;

struct HostCommands final : DsmCCCommandFacade {
    void addCommandListener(std::string e, DsmCCCommandListener* l) override {
        note("addCommandListener", e, l), commandListener = l, registeredCommands = l;
    }
    void removeCommandListener(std::string e, DsmCCCommandListener* l) override {
        note("removeCommandListener", e, std::string(l == registeredCommands ? "same" : "other"));
    }
    void hostOnly2() override { note("hostOnly2"); }
    void release() override { note("dsmcc.release"); }
} commands;

struct HostVersion final : VersionFacade {
    int checkVersionFlag(int f) override { return note("checkVersionFlag", f), f == 0 ? 0 : 0x40 + f; }
} version;

}  // namespace

VideoFacade* VideoFacade::createVideoFacade() { return &video; }
PropertyFacade* PropertyFacade::createPropertyFacade() { return &property; }
SIFacade* SIFacade::createSIFacade() { return &si; }
CarouselFacade* CarouselFacade::createCarouselFacade() { return &carousel; }
DemuxFacade* DemuxFacade::createDemuxFacade() { return &demux; }
TunerFacade* TunerFacade::createTunerFacade() { return &tuner; }
DsmCCCommandFacade* DsmCCCommandFacade::createDsmCCCommandFacade() { return &commands; }
VersionFacade* VersionFacade::createVersionFacade() { return &version; }

namespace {

// ---- The application's end of both sockets ----
constexpr std::size_t RECORD = 1960;
struct Record {
    alignas(8) unsigned char b[RECORD] = {};
    Record(int type = 0, int code = 0) { put(0, type), put(8, code); }
    template <typename T>
    T get(std::size_t at) const {
        T v;
        std::memcpy(&v, b + at, sizeof v);
        return v;
    }
    template <typename T>
    Record& put(std::size_t at, T v) {
        std::memcpy(b + at, &v, sizeof v);
        return *this;
    }
    Record& text(std::size_t at, const std::string& t) {
        std::memcpy(b + at, t.c_str(), t.size() + 1);
        return *this;
    }
    std::string text(std::size_t at) const { return std::string(reinterpret_cast<const char*>(b + at), strnlen(reinterpret_cast<const char*>(b + at), RECORD - at)); }
    int type() const { return get<int>(0); }
    int code() const { return get<int>(8); }
};

class Peer {
public:
    explicit Peer(const std::string& path) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::snprintf(address.sun_path, sizeof address.sun_path, "%s", path.c_str());
        for (int attempt = 0; attempt < 200; ++attempt, ::usleep(10000)) {
            fd_ = ::socket(AF_UNIX, SOCK_STREAM, 0);
            if (::connect(fd_, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0) return;
            ::close(fd_);
            fd_ = -1;
        }
    }
    ~Peer() {
        if (fd_ >= 0) ::close(fd_);
    }
    bool ok() const { return fd_ >= 0; }
    void write(const void* data, std::size_t n) { ASSERT_EQ(::send(fd_, data, n, MSG_NOSIGNAL), static_cast<ssize_t>(n)); }
    void word(int w) { write(&w, 4); }
    void bytes(const Bytes& v) { word(static_cast<int>(v.size())), v.empty() ? void() : write(v.data(), v.size()); }
    Bytes read(std::size_t n) {
        Bytes data(n);
        std::size_t got = 0;
        while (got < n) {
            pollfd p{fd_, POLLIN, 0};
            if (::poll(&p, 1, 3000) <= 0) break;
            const ssize_t r = ::recv(fd_, data.data() + got, n - got, 0);
            if (r <= 0) break;
            got += static_cast<std::size_t>(r);
        }
        EXPECT_EQ(got, n) << "the bridge did not answer";
        return data;
    }
    Record record() {
        Record r;
        const Bytes data = read(RECORD);
        std::memcpy(r.b, data.data(), RECORD);
        return r;
    }

private:
    int fd_ = -1;
};

class BinaryContract : public ::testing::Test {
protected:
    std::string dir;
    MiddlewareIpc* adapter = nullptr;
    std::unique_ptr<Peer> control;

    void SetUp() override {
        std::string pattern = (std::filesystem::temp_directory_path() / "tessarine-contract-XXXXXX").string();
        ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
        dir = pattern;
        ASSERT_TRUE(tessarine::IpcServerManager::setSocketDirectory(dir));
        adapter = MiddlewareIpc::getInstance();
        control = std::make_unique<Peer>(dir + "/ipc.socket");
        ASSERT_TRUE(control->ok());
        takeJournal();
    }
    void TearDown() override {
        control.reset();
        delete adapter;
        std::filesystem::remove_all(dir);
    }
    Record ask(const Record& r) {
        control->write(r.b, RECORD);
        return control->record();
    }
    std::vector<Record> askList(const Record& r) {
        const Record header = ask(r);
        EXPECT_EQ(header.type(), 7);
        std::vector<Record> items;
        for (int i = 0; i < header.code(); ++i) items.push_back(control->record());
        return items;
    }
    // Sends a request that has no answer and waits until it was handled.
    void tell(const Record& r) {
        control->write(r.b, RECORD);
        ask(Record(10, 0));
    }
};

TEST_F(BinaryContract, VideoOperationsAreCalledByTheirSlots) {
    Record bounds(0, 0);
    bounds.put(12, 10).put(16, 20).put(20, 30).put(24, 40);
    tell(bounds);
    tell(Record(0, 2));
    tell(Record(0, 6).text(12, "six"));
    tell(Record(0, 7).put<unsigned char>(12, 1));
    tell(Record(0, 8).put<unsigned char>(12, 1));
    tell(Record(0, 18).put(12, 5).put(16, 6).put(20, 7).put(24, 8));
    const Record got = ask(Record(0, 1));
    EXPECT_EQ((std::vector<int>{got.get<int>(12), got.get<int>(16), got.get<int>(20), got.get<int>(24)}), (std::vector<int>{1, 2, 3, 4}));
    EXPECT_EQ(ask(Record(0, 3)).text(12), "lang3");
    EXPECT_EQ(ask(Record(0, 5)).text(12), "lang5");
    EXPECT_EQ(askList(Record(0, 4)).size(), 2u);
    for (int c = 9; c <= 16; ++c) EXPECT_EQ(ask(Record(0, c)).get<int>(12), 100 + c);
    for (int s = 0; s <= 3; ++s) tell(Record(3, s).put(16, 0.25 + s));
    tell(Record(3, 4).put<unsigned char>(16, 1));
    ipcutil::Rectangle_t a{}, b{};
    adapter->getInitCropValue(&a, &b);
    EXPECT_EQ((std::vector<int>{a.x, a.height, b.x, b.height}), (std::vector<int>{1, 4, 5, 8}));

    EXPECT_EQ(takeJournal(), (std::vector<std::string>{
        "setMainVideoBounds(10,20,30,40)", "reset()", "setText6('six')", "setFlag7(true)", "setFlag8(true)",
        "updateGraphicsRegion(5,6,7,8)", "getMainVideoBounds()", "getLanguage3()", "getLanguage5()", "getLanguages()",
        "getRate9()", "getRate10()", "getRate11()", "getRate12()", "getRate13()", "getRate14()", "getRate15()", "getRate16()",
        "setSoundLevel(0x1p-2)", "setBalanceLevel(0x1.4p+0)", "setBassLevel(0x1.2p+1)", "setTrebleLevel(0x1.ap+1)",
        "setMute(true)", "getInitCropValue()"}));
}

TEST_F(BinaryContract, MediaPlayerOperationsAreCalledByTheirSlots) {
    const Record opened = ask(Record(8, 0).put(12, 1).text(16, "loc"));
    EXPECT_EQ(opened.get<int>(12), 55);
    EXPECT_EQ(opened.b[16], 1);
    EXPECT_EQ(ask(Record(8, 1).put(12, 2)).get<int>(16), 103);
    EXPECT_EQ(ask(Record(8, 2).put(12, 2)).get<int>(16), 104);
    EXPECT_EQ(ask(Record(8, 3).put(12, 2).put(16, 3).put(20, 4)).get<int>(16), 105);
    tell(Record(8, 4).put(12, 2));
    EXPECT_EQ(ask(Record(8, 5).put(12, 2)).b[16], 1);
    tell(Record(8, 6).put(12, 2));
    tell(Record(8, 7).put(12, 2));
    EXPECT_EQ(ask(Record(8, 8).put(12, 2).put(16, 5).put(20, 6).put(24, 7).put(28, 8)).get<int>(16), 110);
    const Record mediaBounds = ask(Record(8, 9).put(12, 2));
    EXPECT_EQ(mediaBounds.get<int>(28), 14);
    tell(Record(8, 10).put(12, 2).put<unsigned char>(16, 1));
    for (int c = 11; c <= 15; ++c)
        tell(c == 13 ? Record(8, 13).put(12, 2).put<unsigned char>(16, 1) : Record(8, c).put(12, 2).put(16, 0.5 * c));
    EXPECT_EQ(takeJournal(), (std::vector<std::string>{
        "open('loc',1)", "getDuration(2)", "getCurrentTime(2)", "setCurrentTime(2,3,4)", "addMediaListener(2,listener)",
        "play(2)", "close(2)", "stop(2)", "setMediaBounds(2,5,6,7,8)", "getMediaBounds(2)", "setMediaFreeze(2,true)",
        "setMediaBalanceLevel(2,0x1.6p+2)", "setMediaSoundLevel(2,0x1.8p+2)", "setMediaMute(2,true)",
        "setMediaBassLevel(2,0x1.cp+2)", "setMediaTrebleLevel(2,0x1.ep+2)"}));
}

TEST_F(BinaryContract, PropertyTunerCarouselAndVersionOperationsAreCalledByTheirSlots) {
    EXPECT_EQ(ask(Record(2, 0).text(12, "k")).text(267), "value-of-k");
    const auto properties = askList(Record(2, 1));
    ASSERT_EQ(properties.size(), 1u);
    EXPECT_EQ(properties[0].text(12) + "=" + properties[0].text(267), "n1=v1");
    tell(Record(2, 2).text(12, "k").text(267, "v"));
    tell(Record(2, 3).text(12, "k"));
    EXPECT_EQ(ask(Record(4, 0)).get<int>(12), 120);
    for (int kind = 1; kind <= 4; ++kind) EXPECT_EQ(askList(Record(4, kind).put(12, 9))[0].get<int>(12), 120 + kind);
    EXPECT_EQ(ask(Record(5, 0).text(12, "c")).text(267), "mounted");
    tell(Record(5, 1).text(12, "c"));
    tell(Record(5, 3));
    tell(Record(5, 4));
    EXPECT_EQ(ask(Record(10, 3)).b[12], 0x43);
    EXPECT_EQ(takeJournal(), (std::vector<std::string>{
        "getProperty('k')", "getProperties()", "setProperty('k','v')", "removeProperty('k')",
        "getCurrentTransportStreamID()", "getIds1(9)", "getIds2()", "getIds3(9)", "getIds4(9)", "mount('c')",
        "umount('c')", "addCarouselListener(listener)", "removeCarouselListener(listener)", "checkVersionFlag(3)"}));
}

TEST_F(BinaryContract, ServiceInformationIsReadFromTheHostsRecordsFieldByField) {
    EXPECT_EQ(ask(Record(6, 0)).text(12), "fmt");
    const Record event = ask(Record(6, 2));
    std::vector<int> values;
    for (std::size_t at : {12, 16, 20, 24, 32, 36, 40}) values.push_back(event.get<int>(at));
    EXPECT_EQ(values, (std::vector<int>{61, 62, 63, 64, 65, 66, 67}));
    EXPECT_EQ(event.text(44) + event.text(299) + event.text(554), "t0t1t2");
    EXPECT_EQ(control->read(1 + 2 + 3 + 5 + 5 + 5),
              (Bytes{1, 2, 2, 3, 3, 3, 1, 0, 0, 0, 's', 1, 0, 0, 0, 'u', 1, 0, 0, 0, 'v'}));
    EXPECT_EQ(askList(Record(6, 4))[0].get<int>(12), 91);
    EXPECT_EQ(ask(Record(6, 5)).b[12], 1);
    const Record service = askList(Record(6, 6))[0];
    EXPECT_EQ((std::vector<int>{service.get<int>(12), service.get<int>(16), service.get<int>(20), service.get<int>(24), service.get<int>(28)}),
              (std::vector<int>{51, 52, 53, 54, 55}));
    EXPECT_EQ(service.text(36), "svc");
    EXPECT_EQ(ask(Record(6, 7)).get<int>(12), 56);
    EXPECT_EQ(ask(Record(6, 8)).text(12), "desc");
    EXPECT_EQ(askList(Record(6, 10).put(12, 1))[0].get<int>(32), 76);
    const Record ts = ask(Record(6, 12));
    EXPECT_EQ((std::vector<int>{ts.get<int>(12), ts.get<int>(16), ts.get<int>(20), ts.get<int>(28), ts.get<int>(32)}),
              (std::vector<int>{41, 42, 43, 44, 2}));
    const Record network = ask(Record(6, 14));
    EXPECT_EQ(network.get<int>(12), 31);
    EXPECT_EQ(network.text(16), "net");
    EXPECT_EQ(askList(Record(6, 16).put(12, 1))[0].get<int>(24), 84);
    for (int code : {3, 11, 13, 15}) {
        const Record header = ask(Record(6, code).put(12, 4).put(20, 5).put(24, 6));
        ASSERT_EQ(header.code(), 1);
        const Record item = control->record();
        EXPECT_EQ(item.get<unsigned short>(12), 0x4d);
        EXPECT_EQ(item.get<unsigned>(16), 3u);
        EXPECT_EQ(control->read(3), (Bytes{7, 8, 9}));
    }
    EXPECT_EQ(takeJournal(), (std::vector<std::string>{
        "getSICodingFormat()", "getProgramEvent()", "getCASystemIds()", "isProtectedService()", "getServices()",
        "getCurrentService()", "getServiceDescription()", "getServiceComponents(1)", "getTransportStream()", "getNetwork()",
        "getPMTs(1)", "getProgramEventDescriptors(5,6)", "getServiceComponentDescriptors(4)",
        "getTransportStreamDescriptors(4)", "getNetworkDescriptors()"}));
}

TEST_F(BinaryContract, DemuxOperationsAreCalledByTheirSlots) {
    Peer section(dir + "/ipcdemux.socket");
    ASSERT_TRUE(section.ok());
    for (int command = 0; command <= 12; ++command) {
        section.word(command);
        if (command == 2 || command == 3 || command == 8) section.word(100 + command);
        if (command >= 4 && command <= 7) {
            section.word(command);
            for (int s = 0; s < (command == 7 ? 3 : 2); ++s) section.bytes(Bytes(static_cast<std::size_t>(s + 1), static_cast<unsigned char>(s)));
        }
    }
    section.word(13);
    EXPECT_EQ(section.read(4 + 2), (Bytes{2, 0, 0, 0, 0xca, 0xfe}));
    EXPECT_EQ(takeJournal(), (std::vector<std::string>{
        "start()", "stop()", "set_pid(102)", "set_table_id(103)", "set_positive_filter(4,0.,1.1.)",
        "set_greater_than_filter(5,0.,1.1.)", "set_less_than_filter(6,0.,1.1.)", "set_xor_filter(7,0.,1.1.,2.2.2.)",
        "set_time_out(108L)", "clear_table_id()", "clear_positive_filter()", "clear_less_than_filter()",
        "clear_xor_filter()", "read_section()"}));
}

TEST_F(BinaryContract, HostCallsOfTheListenerBasesReachTheApplication) {
    tell(Record(5, 3));
    tell(Record(8, 4).put(12, 77));
    ASSERT_TRUE(graphicsListener && carouselListener && mediaListener && commandListener);

    graphicsListener->graphicsSettingsChanged({1, 2, 3, 4}, {5, 6, 1920, 1080});
    const Record graphics = control->record();
    EXPECT_EQ((std::vector<int>{graphics.code(), graphics.get<int>(12), graphics.get<int>(24), graphics.get<int>(28), graphics.get<int>(40)}),
              (std::vector<int>{17, 1, 4, 5, 1080}));
    carouselListener->downloadComplete("only");
    const Record one = control->record();
    EXPECT_EQ(one.type() * 100 + one.code(), 502);
    EXPECT_EQ(one.text(12) + "|" + one.text(267), "only|");
    carouselListener->downloadComplete("first", "second");
    EXPECT_EQ(control->record().text(267), "second");
    mediaListener->endOfMedia(77);
    const Record end = control->record();
    EXPECT_EQ(end.type() * 100 + end.code(), 816);
    EXPECT_EQ(end.get<int>(12), 77);
    commandListener->commandReceived({12, 0x0102030405060708LL, 0xab, "cmd"});
    const Record command = control->record();
    EXPECT_EQ(command.type() * 100 + command.code(), 912);
    EXPECT_EQ(command.get<std::int64_t>(16), 0x0102030405060708LL);
    EXPECT_EQ(command.b[24], 0xab);
    EXPECT_EQ(command.text(25), "cmd");
}

TEST(BinaryContractLifecycle, TheAdapterSubscribesAndReleasesThroughTheRightSlots) {
    std::string pattern = (std::filesystem::temp_directory_path() / "tessarine-contract-XXXXXX").string();
    ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
    ASSERT_TRUE(tessarine::IpcServerManager::setSocketDirectory(pattern));
    takeJournal();
    MiddlewareIpc* adapter = MiddlewareIpc::getInstance();
    EXPECT_EQ(adapter, MiddlewareIpc::getInstance());
    EXPECT_EQ(takeJournal(), (std::vector<std::string>{"addGraphicsSettingsListener(listener)",
                                                       "addCommandListener('nclEditingCommand',listener)"}));
    delete adapter;
    EXPECT_EQ(takeJournal(), (std::vector<std::string>{
        "removeGraphicsSettingsListener('same')", "video.release()", "removeCommandListener('nclEditingCommand','same')",
        "dsmcc.release()", "property.release()", "si.release()", "carousel.release()", "demux.release()", "tuner.release()"}));
    std::filesystem::remove_all(pattern);
}

}  // namespace
