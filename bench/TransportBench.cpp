// Throughput and latency of the two channels, measured through real sockets.
#include <benchmark/benchmark.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <list>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "tessarine/IpcDemuxServer.h"
#include "tessarine/IpcServer.h"
#include "transport/UnixSocket.h"

namespace {

using namespace tessarine;

std::string tempSocket(const char* name) {
    std::string dir = (std::filesystem::temp_directory_path() / "tessarine-bench-XXXXXX").string();
    if (::mkdtemp(dir.data()) == nullptr) std::abort();
    return dir + "/" + name;
}

FileDescriptor connectTo(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
    FileDescriptor fd(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (::connect(fd.get(), reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) std::abort();
    return fd;
}

// Sends every record straight back: one request, one answer.
class Echo : public IpcListener {
public:
    void update(message& record) override {
        if (record.type == MSG_VIDEO && record.code == 2) return;  // the connection's end: nobody to answer
        server->sendMessage(record);
    }
    void update(std::list<message>) override {}
    void clientConnected() override {}
    void clientDisconnected() override {}
    IpcServer* server = nullptr;
};

void BM_ControlRoundTrip(benchmark::State& state) {
    const std::string path = tempSocket("ipc.socket");
    Echo echo;
    IpcServer server(&echo, path.c_str(), static_cast<int>(path.size()));
    echo.server = &server;
    server.start();
    FileDescriptor client = connectTo(path);
    message record;
    record.clear();
    for (auto _ : state) {
        unix_socket::sendAll(client.get(), record.bytes(), MESSAGE_SIZE);
        unix_socket::receiveAll(client.get(), record.bytes(), MESSAGE_SIZE);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * 2 * MESSAGE_SIZE);
    client.reset();
    server.stop();
}
BENCHMARK(BM_ControlRoundTrip)->UseRealTime();

// A list answer of N records as one contiguous batch.
class ListAnswer : public IpcListener {
public:
    void update(message& record) override {
        if (record.type == MSG_VIDEO && record.code == 2) return;
        SendBatch batch;
        for (int i = 0; i < items; ++i) batch.add(record);
        server->send(batch);
    }
    void update(std::list<message>) override {}
    void clientConnected() override {}
    void clientDisconnected() override {}
    IpcServer* server = nullptr;
    int items = 0;
};

void BM_ControlListAnswer(benchmark::State& state) {
    const std::string path = tempSocket("ipc.socket");
    ListAnswer answer;
    answer.items = static_cast<int>(state.range(0));
    IpcServer server(&answer, path.c_str(), static_cast<int>(path.size()));
    answer.server = &server;
    server.start();
    FileDescriptor client = connectTo(path);
    message record;
    record.clear();
    std::vector<unsigned char> sink(MESSAGE_SIZE * static_cast<std::size_t>(answer.items));
    for (auto _ : state) {
        unix_socket::sendAll(client.get(), record.bytes(), MESSAGE_SIZE);
        unix_socket::receiveAll(client.get(), sink.data(), sink.size());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * sink.size()));
    client.reset();
    server.stop();
}
BENCHMARK(BM_ControlListAnswer)->Arg(10)->Arg(100)->UseRealTime();

class FixedSection : public IpcDemuxServerListener {
public:
    void start() override {}
    void stop() override {}
    void set_pid(int) override {}
    void set_table_id(int) override {}
    void set_positive_filter(int, const std::vector<unsigned char>&, const std::vector<unsigned char>&) override {}
    void set_greater_than_filter(int, const std::vector<unsigned char>&, const std::vector<unsigned char>&) override {}
    void set_less_than_filter(int, const std::vector<unsigned char>&, const std::vector<unsigned char>&) override {}
    void set_xor_filter(int, const std::vector<unsigned char>&, const std::vector<unsigned char>&,
                        const std::vector<unsigned char>&) override {}
    void set_time_out(long) override {}
    void clear_table_id() override {}
    void clear_positive_filter() override {}
    void clear_less_than_filter() override {}
    void clear_xor_filter() override {}
    std::vector<unsigned char> read_section() override { return section; }
    std::vector<unsigned char> section;
};

void BM_DemuxSectionRead(benchmark::State& state) {
    const std::string path = tempSocket("ipcdemux.socket");
    FixedSection listener;
    listener.section.assign(static_cast<std::size_t>(state.range(0)), 0x47);
    IpcDemuxServer server(path);
    server.setListener(&listener);
    server.start();
    FileDescriptor client = connectTo(path);
    std::vector<unsigned char> answer(4 + listener.section.size());
    const std::int32_t read = 13;
    for (auto _ : state) {
        unix_socket::sendAll(client.get(), &read, sizeof read);
        unix_socket::receiveAll(client.get(), answer.data(), answer.size());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * listener.section.size()));
    client.reset();
    server.stop();
}
BENCHMARK(BM_DemuxSectionRead)->Arg(188)->Arg(1024)->Arg(4096)->UseRealTime();

// Baseline: the same 4096 bytes written one send call per byte, read whole.
void BM_PerByteSendBaseline(benchmark::State& state) {
    int pair[2];
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, pair) != 0) std::abort();
    FileDescriptor writer(pair[0]), reader(pair[1]);
    const std::size_t length = static_cast<std::size_t>(state.range(0));
    std::vector<unsigned char> bytes(length, 0x47), sink(length);
    for (auto _ : state) {
        // The reader runs alongside, as a client would: tiny sends would
        // otherwise fill the socket buffer with per-call overhead.
        std::thread drain([&] { unix_socket::receiveAll(reader.get(), sink.data(), sink.size()); });
        for (std::size_t i = 0; i < length; ++i) ::send(writer.get(), &bytes[i], 1, MSG_NOSIGNAL);
        drain.join();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * length));
}
BENCHMARK(BM_PerByteSendBaseline)->Arg(4096)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
