#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "MiddlewareIpc.h"
#include "tessarine/IpcServerManager.h"
#include "support/ControlTestClient.h"
#include "support/DemuxTestClient.h"
#include "support/TempDir.h"
#include "support/fakes/FacadeSelection.h"
#include "support/fakes/RecordingFacades.h"

namespace tessarine {
namespace testing {

// The whole bridge in a private socket directory: the adapter built on the
// fakes (or on no facades), with a control client connected to it.
class BridgeTest : public ::testing::Test {
protected:
    TempDir dir;
    FakeFacades fakes;
    MiddlewareIpc* adapter = nullptr;
    std::unique_ptr<ControlTestClient> control;

    void SetUp() override { start(true); }
    void TearDown() override { delete adapter; }

    void start(bool withFacades) {
        ASSERT_TRUE(IpcServerManager::setSocketDirectory(dir.path()));
        if (withFacades) {
            FacadeSelection::select(fakes);
        } else {
            FacadeSelection::selectNone();
        }
        adapter = MiddlewareIpc::getInstance();
        control = std::make_unique<ControlTestClient>(dir.file("ipc.socket"));
        ASSERT_TRUE(control->connected());
    }

    std::unique_ptr<DemuxTestClient> connectDemux() {
        return std::make_unique<DemuxTestClient>(dir.file("ipcdemux.socket"));
    }

    message ask(const message& request) { return control->ask(request); }
    std::vector<message> askList(const message& request) { return control->askList(request); }

    // Returns once every record sent before has been handled: the control
    // channel handles records in order, and a version check is answered.
    void fence() { ask(makeRecord(MSG_VERSION, 0)); }

    // The calls a fake received while `request` (which has no answer) was handled.
    std::vector<std::string> callsFor(CallLog& log, const message& request) {
        const std::size_t before = log.count();
        EXPECT_TRUE(control->send(request));
        fence();
        const auto all = log.calls();
        return std::vector<std::string>(all.begin() + static_cast<long>(before), all.end());
    }

    template <typename Base>
    const void* base() const {
        return static_cast<const Base*>(adapter);
    }
};

// The same bridge, with every factory returning no facade.
class BridgeWithoutFacadesTest : public BridgeTest {
protected:
    void SetUp() override { start(false); }
};

inline message request(std::int32_t type, std::int32_t code, std::function<void(message&)> fill = nullptr) {
    message record = makeRecord(type, code);
    if (fill) fill(record);
    return record;
}

inline std::string text(const message& record, std::size_t offset) { return readText(record, offset); }

}  // namespace testing
}  // namespace tessarine
