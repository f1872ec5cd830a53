#pragma once

#include <pybind11/pybind11.h>

#include <memory>

#include "Guarded.h"
#include "tessarine/client/DemuxClient.h"

namespace tessarine {
namespace python {

// What stands behind a Python tessarine.DemuxClient.
class DemuxBinding {
public:
    explicit DemuxBinding(const client::DemuxOptions& options)
        : options_(options), client_(std::make_unique<client::DemuxClient>(options)) {}
    // With the GIL held, as Python deletes its objects.
    ~DemuxBinding() { close(); }
    DemuxBinding(const DemuxBinding&) = delete;
    DemuxBinding& operator=(const DemuxBinding&) = delete;

    Guarded<client::DemuxClient>& guarded() { return client_; }
    const client::DemuxOptions& options() const { return options_; }

    // With the GIL held; released while a read in flight finishes.
    void close() {
        pybind11::gil_scoped_release released;
        client_.close();
    }

private:
    const client::DemuxOptions options_;
    Guarded<client::DemuxClient> client_;
};

}  // namespace python
}  // namespace tessarine
