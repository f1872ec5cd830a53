// Reading sources (file pacing, UDP on loopback) and damaged input.

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <random>
#include <thread>

#include "StreamFiles.h"
#include "sim/broadcast/Broadcast.h"

namespace tessarine::broadcast::test {
namespace {

using namespace std::chrono_literals;

template <typename Condition>
bool waitFor(Condition condition, std::chrono::milliseconds limit = 5000ms) {
    for (auto end = std::chrono::steady_clock::now() + limit; std::chrono::steady_clock::now() < end;) {
        if (condition()) return true;
        std::this_thread::sleep_for(10ms);
    }
    return condition();
}

std::string serviceNames(const SiModel& model) {
    std::string names;
    for (const auto& s : model.getServices()) names += std::to_string(s.value0) + "=" + s.text0 + ";";
    return names;
}

std::string writeTemp(const Bytes& bytes) {
    char path[] = "/tmp/tessarine-ts-XXXXXX";
    int fd = mkstemp(path);
    EXPECT_EQ(write(fd, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    close(fd);
    return path;
}

TEST(Reader, FileIsPacedByPcrOrReadAsFastAsPossible) {
    Broadcast fast;
    std::string error;
    ASSERT_TRUE(fast.open(dataFile("broadcast.ts"), Pace::None, error)) << error;
    EXPECT_TRUE(waitFor([&] { return fast.input().counters().loops >= 3; }));
    EXPECT_EQ(serviceNames(fast.si()), "101=Tessarine One;102=Tessarine Two;");
    EXPECT_EQ(fast.input().counters().warnings(), 0u) << "looping must not count as damage";

    Broadcast paced;  // three seconds of stream at 1 Mbit/s
    ASSERT_TRUE(paced.open(dataFile("broadcast.ts"), Pace::Pcr, error)) << error;
    std::this_thread::sleep_for(1000ms);
    uint64_t bytes = paced.input().counters().bytes;
    EXPECT_GT(bytes, 60'000u);
    EXPECT_LT(bytes, 250'000u);
    EXPECT_EQ(paced.input().counters().loops, 0u);
    EXPECT_FALSE(paced.si().getServices().empty());
}

TEST(Reader, AFileWithOnePcrOrATinyFileIsStillPaced) {
    const Bytes ts = readFile(dataFile("broadcast.ts"));
    Bytes onePcr(ts.begin(), ts.begin() + 300 * 188);
    int pcrs = 0;
    for (size_t at = 0; at < onePcr.size(); at += 188) {
        uint8_t* p = &onePcr[at];
        if (ts_has_adaptation(p) && ts_get_adaptation(p) >= 7 && tsaf_has_pcr(p) && pcrs++ > 0) p[5] &= ~0x10;
    }
    for (const auto& [bytes, pace] : {std::pair{onePcr, Pace::Pcr}, std::pair{Bytes{0x47}, Pace::None}}) {
        const std::string path = writeTemp(bytes);
        Broadcast broadcast;
        std::string error;
        ASSERT_TRUE(broadcast.open(path, pace, error)) << error;
        std::this_thread::sleep_for(1000ms);
        const InputCounters c = broadcast.input().counters();
        EXPECT_LT(c.bytes, 250'000u) << "1 Mbit/s without a PCR interval";
        EXPECT_LT(c.loops, 200u);
        unlink(path.c_str());
    }
}

TEST(Reader, UdpOnLoopbackYieldsTheSameServices) {
    Broadcast broadcast;
    std::string error;
    ASSERT_TRUE(broadcast.open("udp://127.0.0.1:0", Pace::Pcr, error)) << error;
    ASSERT_GT(broadcast.reader().boundPort(), 0);

    int sender = socket(AF_INET, SOCK_DGRAM, 0);
    sockaddr_in to{};
    to.sin_family = AF_INET;
    to.sin_port = htons(static_cast<uint16_t>(broadcast.reader().boundPort()));
    to.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    Bytes ts = readFile(dataFile("broadcast.ts"));
    sendto(sender, ts.data(), 0, 0, reinterpret_cast<sockaddr*>(&to), sizeof(to));  // ignored, not the end
    for (size_t at = 0; at < ts.size(); at += 7 * 188) {
        size_t n = std::min<size_t>(7 * 188, ts.size() - at);
        sendto(sender, ts.data() + at, n, 0, reinterpret_cast<sockaddr*>(&to), sizeof(to));
        if (at % (70 * 188) == 0) std::this_thread::sleep_for(1ms);  // spare the receive buffer
    }
    close(sender);

    SiModel direct;
    TsInput reference(direct);
    feedAll(reference, ts);
    EXPECT_TRUE(waitFor([&] { return serviceNames(broadcast.si()) == serviceNames(direct); }))
        << serviceNames(broadcast.si());
    EXPECT_EQ(broadcast.si().getNetwork()->text0, direct.getNetwork()->text0);
    EXPECT_EQ(broadcast.input().counters().readErrors, 1u);
}

TEST(Reader, StandardInputIsReadUntilItEnds) {
    int pipeFds[2];
    ASSERT_EQ(pipe(pipeFds), 0);
    int savedStdin = dup(STDIN_FILENO);
    dup2(pipeFds[0], STDIN_FILENO);
    close(pipeFds[0]);
    Broadcast broadcast;
    std::string error;
    ASSERT_TRUE(broadcast.open("-", Pace::Pcr, error)) << error;
    std::thread writer([&] {
        Bytes ts = readFile(dataFile("broadcast.ts"));
        EXPECT_EQ(write(pipeFds[1], ts.data(), ts.size()), static_cast<ssize_t>(ts.size()));
        close(pipeFds[1]);
    });
    writer.join();
    EXPECT_TRUE(waitFor([&] { return broadcast.reader().ended(); }));
    broadcast.close();
    dup2(savedStdin, STDIN_FILENO);
    close(savedStdin);
    EXPECT_EQ(broadcast.input().counters().loops, 0u);
    EXPECT_EQ(serviceNames(broadcast.si()), "101=Tessarine One;102=Tessarine Two;");
    EXPECT_NE(broadcast.status().find("(ended)"), std::string::npos);
}

TEST(Reader, UnopenableSourcesAreRefusedWithAReason) {
    Broadcast broadcast;
    std::string error;
    EXPECT_FALSE(broadcast.open("/nonexistent/stream.ts", Pace::Pcr, error));
    EXPECT_NE(error.find("stream.ts"), std::string::npos);
    EXPECT_FALSE(broadcast.open("udp://127.0.0.1", Pace::Pcr, error));
    EXPECT_FALSE(broadcast.open("udp://not-an-address:1234", Pace::Pcr, error));
    Pace pace;
    EXPECT_TRUE(parsePace("none", pace));
    EXPECT_EQ(pace, Pace::None);
    EXPECT_FALSE(parsePace("fast", pace));
}

// Damaged copies: decoding goes on, the damage is counted, and what is
// left intact is still served.
TEST(DamagedInput, FlippedBytesDroppedPacketsAndTruncationAreCountedNotFatal) {
    const Bytes ts = readFile(dataFile("broadcast.ts"));
    std::mt19937 random(8);

    Bytes flipped = ts;
    for (int i = 0; i < 300; ++i) flipped[random() % flipped.size()] ^= static_cast<uint8_t>(1 + random() % 255);
    Bytes dropped;
    for (size_t at = 0; at < ts.size(); at += 188)
        if (random() % 10 != 0) dropped.insert(dropped.end(), ts.begin() + at, ts.begin() + at + 188);
    Bytes cut;  // every packet cut short by a few bytes, then the file's tail
    for (size_t at = 0; at + 188 <= 40 * 188; at += 188) cut.insert(cut.end(), ts.begin() + at, ts.begin() + at + 180);
    cut.insert(cut.end(), ts.begin() + 40 * 188, ts.end() - 100);

    for (const Bytes* damaged : {&flipped, &dropped, &cut}) {
        SiModel model;
        TsInput input(model);
        for (int pass = 0; pass < 2; ++pass) feedAll(input, *damaged, 777);
        InputCounters c = input.counters();
        EXPECT_GT(c.warnings(), 0u);
        EXPECT_GT(c.packets, 3000u);
        EXPECT_FALSE(model.getServices().empty());
    }
}

// An adaptation field that claims the whole packet, or more, while a
// payload is flagged: the decoders would read past the packet.
TEST(DamagedInput, AdaptationFieldsLongerThanThePacketAreDropped) {
    SiModel model;
    TsInput input(model);
    feedAll(input, readFile(dataFile("broadcast.ts")), 188 * 7);
    Bytes bad;
    for (uint8_t length : {183, 200, 255}) {
        Bytes packet(188, 0xFF);
        packet[0] = 0x47, packet[1] = 0x40, packet[2] = 0x00, packet[3] = 0x30, packet[4] = length;
        bad.insert(bad.end(), packet.begin(), packet.end());
    }
    feedAll(input, bad, bad.size());
    EXPECT_EQ(input.counters().transportErrors, 3u);
    EXPECT_FALSE(model.getServices().empty());
}

TEST(DamagedInput, NotATransportStreamIsSkippedThroughTheReader) {
    Bytes noise(200'000);
    std::mt19937 random(3);
    for (auto& b : noise) b = static_cast<uint8_t>(random() % 0x47);  // never a sync byte
    std::string path = writeTemp(noise);
    Broadcast broadcast;
    std::string error;
    ASSERT_TRUE(broadcast.open(path, Pace::None, error)) << error;
    EXPECT_TRUE(waitFor([&] { return broadcast.input().counters().loops >= 2; }));
    broadcast.close();
    InputCounters c = broadcast.input().counters();
    EXPECT_EQ(c.packets, 0u);
    EXPECT_GE(c.syncLosses, 2u);
    EXPECT_NE(broadcast.status().find("warnings"), std::string::npos);
    EXPECT_TRUE(broadcast.si().getServices().empty());
    unlink(path.c_str());

    std::string empty = writeTemp({});
    ASSERT_TRUE(broadcast.open(empty, Pace::None, error));
    EXPECT_TRUE(waitFor([&] { return broadcast.reader().ended(); }));
    unlink(empty.c_str());
}

}  // namespace
}  // namespace tessarine::broadcast::test
