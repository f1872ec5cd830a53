#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "tessarine/client/Export.h"
#include "tessarine/client/Options.h"
#include "tessarine/client/Result.h"

namespace tessarine {
namespace client {

// A client of the bridge's section-filter channel, which drives one section
// filter of the demultiplexer. Only readSection() is answered; the other
// commands return once sent. Calls are serialised; the first call connects,
// and the call after a lost connection connects again. A readSection() that
// runs out of time closes the connection, so that the late section is never
// taken for the next one. The filter settings stay in the bridge across
// connections. Errors and time limits are those of ControlClient.
class TESSARINE_CLIENT_API DemuxClient {
public:
    using Bytes = std::vector<std::uint8_t>;

    explicit DemuxClient(DemuxOptions options = {});
    ~DemuxClient();
    DemuxClient(const DemuxClient&) = delete;
    DemuxClient& operator=(const DemuxClient&) = delete;

    const DemuxOptions& options() const;
    Result<void> connect(Timeout timeout = {});
    void disconnect();

    Result<void> start(Timeout timeout = {});
    Result<void> stop(Timeout timeout = {});
    Result<void> setPid(std::int32_t pid, Timeout timeout = {});
    Result<void> setTableId(std::int32_t tableId, Timeout timeout = {});
    // The meaning of the integer and of each byte string is the
    // middleware's; each string holds at most 4096 bytes.
    Result<void> setPositiveFilter(std::int32_t argument, const Bytes& first, const Bytes& second,
                                   Timeout timeout = {});
    Result<void> setGreaterThanFilter(std::int32_t argument, const Bytes& first, const Bytes& second,
                                      Timeout timeout = {});
    Result<void> setLessThanFilter(std::int32_t argument, const Bytes& first, const Bytes& second,
                                   Timeout timeout = {});
    Result<void> setXorFilter(std::int32_t argument, const Bytes& first, const Bytes& second, const Bytes& third,
                              Timeout timeout = {});
    Result<void> setTimeOut(std::int32_t timeOut, Timeout timeout = {});
    Result<void> clearTableId(Timeout timeout = {});
    Result<void> clearPositiveFilter(Timeout timeout = {});
    Result<void> clearLessThanFilter(Timeout timeout = {});
    Result<void> clearXorFilter(Timeout timeout = {});

    // The next section (empty when the bridge has none).
    Result<Bytes> readSection(Timeout timeout = {});

private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace client
}  // namespace tessarine
