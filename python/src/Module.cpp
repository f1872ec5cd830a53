// The tessarine._tessarine extension module: the client library's
// ControlClient and DemuxClient for Python.
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <type_traits>
#include <variant>

#include "ClientBinding.h"
#include "DemuxBinding.h"
#include "Errors.h"
#include "EventIterator.h"
#include "MethodBinding.h"

namespace py = pybind11;
using namespace pybind11::literals;

namespace tessarine {
namespace python {
namespace {

using client::ControlClient;
using client::DemuxClient;

// The index of an event kind in Event, which is also its callback's slot.
template <typename T, std::size_t I = 0>
constexpr std::size_t kindOf() {
    if constexpr (std::is_same_v<T, std::variant_alternative_t<I, Event>>) {
        return I;
    } else {
        return kindOf<T, I + 1>();
    }
}

// Neither given: the options' default, which honours TESSARINE_SOCKET_DIR.
std::string socketPath(const std::optional<std::string>& socket, const std::optional<std::string>& directory,
                       const char* name, const std::string& fallback) {
    if (socket && directory) raise(client::ErrorCode::InvalidArgument, "give socket or socket_dir, not both");
    if (socket) return *socket;
    if (directory) return client::socketIn(*directory, name);
    return fallback;
}

double seconds(std::chrono::milliseconds limit) { return static_cast<double>(limit.count()) / 1000.0; }

// What both clients share: construction from a socket or a socket
// directory, the lifetime methods, connect and disconnect.
template <typename Binding, typename Client, typename Options>
py::class_<Binding> defineClientClass(py::module_& m, const char* name, const char* doc, const char* socketName) {
    py::class_<Binding> cls(m, name, doc);
    cls.def(py::init([=](std::optional<std::string> socket, std::optional<std::string> socketDir, double limit) {
                Options options;
                options.socketPath = socketPath(socket, socketDir, socketName, options.socketPath);
                options.timeout = toMilliseconds(limit);
                return std::make_unique<Binding>(options);
            }),
            "socket"_a = py::none(), py::kw_only(), "socket_dir"_a = py::none(), "timeout"_a = 5.0)
        .def("close", &Binding::close, "Closes the connection and stops the client's threads; later calls fail.")
        .def("__enter__", [](py::object self) { return self; })
        .def("__exit__", [](Binding& self, py::args) { self.close(); })
        .def_property_readonly("socket", [](Binding& self) { return self.options().socketPath; })
        .def_property_readonly("timeout", [](Binding& self) { return seconds(self.options().timeout); })
        .def("__repr__",
             [name](Binding& self) {
                 return std::string("<tessarine.") + name +
                        " socket=" + py::repr(py::str(self.options().socketPath)).template cast<std::string>() + ">";
             })
        .def("connect", bindMethod<Binding>(&Client::connect), py::kw_only(), "timeout"_a = py::none())
        .def("disconnect", [](Binding& self) {
            return callReleased(self.guarded(), [](Client& c) {
                c.disconnect();
                return client::Result<void>();
            });
        });
    return cls;
}

template <typename Setter>
auto eventCallback() {
    return [](ClientBinding& self, py::object callback) {
        if (!callback.is_none() && !PyCallable_Check(callback.ptr()))
            throw py::type_error("a callback must be callable or None");
        self.router().setCallback(kindOf<Setter>(), callback);
        return callback;
    };
}

// The Rectangle-taking calls take its four fields instead.
template <typename R>
auto withRectangle(client::Result<R> (ControlClient::*method)(const client::Rectangle&, client::Timeout)) {
    return [method](ClientBinding& self, std::int32_t x, std::int32_t y, std::int32_t w, std::int32_t h,
                    std::optional<double> timeout) {
        const client::Timeout limit = toTimeout(timeout);
        return callReleased(self.guarded(), [&](ControlClient& c) { return (c.*method)({x, y, w, h}, limit); });
    };
}

void defineClient(py::module_& m) {
    const auto timeout = ("timeout"_a = py::none());
    const auto kw = py::kw_only();
    auto cls = defineClientClass<ClientBinding, ControlClient, client::ClientOptions>(
        m, "Client", "A client of the bridge's control channel.", CONTROL_SOCKET_NAME);
    cls.def_property_readonly("connected",
                              [](ClientBinding& self) {
                                  bool connected = false;
                                  self.guarded().use([&](ControlClient& c) { connected = c.connected(); });
                                  return connected;
                              })
        .def(
            "events",
            [](ClientBinding& self, std::optional<double> limit) {
                return EventIterator(self.router().queue(), limit);
            },
            "timeout"_a = py::none())
        .def("on_download_complete", eventCallback<client::DownloadComplete>(), "callback"_a)
        .def("on_graphics_settings", eventCallback<client::GraphicsSettings>(), "callback"_a)
        .def("on_end_of_media", eventCallback<client::EndOfMedia>(), "callback"_a)
        .def("on_dsmcc_command", eventCallback<client::DsmccCommand>(), "callback"_a)
        .def("on_app_state_request", eventCallback<AppStateAnswered>(), "callback"_a)
        .def("on_disconnected", eventCallback<ConnectionEnded>(), "callback"_a)
        // Version, video and graphics
        .def("check_version", bindMethod<ClientBinding>(&ControlClient::checkVersion), "flag"_a, kw, timeout)
        .def("set_video_bounds", withRectangle(&ControlClient::setVideoBounds), "x"_a, "y"_a, "width"_a, "height"_a, kw,
             timeout)
        .def("video_bounds", bindMethod<ClientBinding>(&ControlClient::videoBounds), kw, timeout)
        .def("reset_video", bindMethod<ClientBinding>(&ControlClient::resetVideo), kw, timeout)
        .def("video_language", bindMethod<ClientBinding>(&ControlClient::videoLanguage), "which"_a, kw, timeout)
        .def("video_languages", bindMethod<ClientBinding>(&ControlClient::videoLanguages), kw, timeout)
        .def("set_video_text", bindMethod<ClientBinding>(&ControlClient::setVideoText), "text"_a, kw, timeout)
        .def("set_video_flag", bindMethod<ClientBinding>(&ControlClient::setVideoFlag), "which"_a, "flag"_a, kw,
             timeout)
        .def("video_rate", bindMethod<ClientBinding>(&ControlClient::videoRate), "which"_a, kw, timeout)
        .def("apply_graphics_settings", bindMethod<ClientBinding>(&ControlClient::applyGraphicsSettings), kw, timeout)
        .def("update_graphics_region", withRectangle(&ControlClient::updateGraphicsRegion), "x"_a, "y"_a, "width"_a,
             "height"_a, kw, timeout)
        // System properties
        .def("system_property", bindMethod<ClientBinding>(&ControlClient::systemProperty), "name"_a, kw, timeout)
        .def("system_properties", bindMethod<ClientBinding>(&ControlClient::systemProperties), kw, timeout)
        .def("set_system_property", bindMethod<ClientBinding>(&ControlClient::setSystemProperty), "name"_a, "value"_a,
             kw, timeout)
        .def("remove_system_property", bindMethod<ClientBinding>(&ControlClient::removeSystemProperty), "name"_a, kw,
             timeout)
        // Audio of the main video
        .def("set_sound_level", bindMethod<ClientBinding>(&ControlClient::setSoundLevel), "level"_a, kw, timeout)
        .def("set_balance_level", bindMethod<ClientBinding>(&ControlClient::setBalanceLevel), "level"_a, kw, timeout)
        .def("set_bass_level", bindMethod<ClientBinding>(&ControlClient::setBassLevel), "level"_a, kw, timeout)
        .def("set_treble_level", bindMethod<ClientBinding>(&ControlClient::setTrebleLevel), "level"_a, kw, timeout)
        .def("set_mute", bindMethod<ClientBinding>(&ControlClient::setMute), "mute"_a, kw, timeout)
        // Tuner
        .def("current_transport_stream_id", bindMethod<ClientBinding>(&ControlClient::currentTransportStreamId), kw,
             timeout)
        .def("tuner_ids", bindMethod<ClientBinding>(&ControlClient::tunerIds), "kind"_a, "parameter"_a, kw, timeout)
        // Object carousels
        .def("mount_carousel", bindMethod<ClientBinding>(&ControlClient::mountCarousel), "name"_a, kw, timeout)
        .def("unmount_carousel", bindMethod<ClientBinding>(&ControlClient::unmountCarousel), "name"_a, kw, timeout)
        .def("add_carousel_listener", bindMethod<ClientBinding>(&ControlClient::addCarouselListener), kw, timeout)
        .def("remove_carousel_listener", bindMethod<ClientBinding>(&ControlClient::removeCarouselListener), kw, timeout)
        // Media players
        .def("open_media", bindMethod<ClientBinding>(&ControlClient::openMedia), "locator"_a, kw, timeout)
        .def("media_duration", bindMethod<ClientBinding>(&ControlClient::mediaDuration), "handle"_a, kw, timeout)
        .def("media_current_time", bindMethod<ClientBinding>(&ControlClient::mediaCurrentTime), "handle"_a, kw, timeout)
        .def("set_media_current_time", bindMethod<ClientBinding>(&ControlClient::setMediaCurrentTime), "handle"_a,
             "first"_a, "second"_a, kw, timeout)
        .def("add_media_listener", bindMethod<ClientBinding>(&ControlClient::addMediaListener), "handle"_a, kw, timeout)
        .def("play_media", bindMethod<ClientBinding>(&ControlClient::playMedia), "handle"_a, kw, timeout)
        .def("close_media", bindMethod<ClientBinding>(&ControlClient::closeMedia), "handle"_a, kw, timeout)
        .def("stop_media", bindMethod<ClientBinding>(&ControlClient::stopMedia), "handle"_a, kw, timeout)
        .def(
            "set_media_bounds",
            [](ClientBinding& self, std::int32_t handle, std::int32_t x, std::int32_t y, std::int32_t w, std::int32_t h,
               std::optional<double> limit) {
                const client::Timeout t = toTimeout(limit);
                return callReleased(self.guarded(),
                                    [&](ControlClient& c) { return c.setMediaBounds(handle, {x, y, w, h}, t); });
            },
            "handle"_a, "x"_a, "y"_a, "width"_a, "height"_a, kw, timeout)
        .def("media_bounds", bindMethod<ClientBinding>(&ControlClient::mediaBounds), "handle"_a, kw, timeout)
        .def("set_media_freeze", bindMethod<ClientBinding>(&ControlClient::setMediaFreeze), "handle"_a, "freeze"_a, kw,
             timeout)
        .def("set_media_balance_level", bindMethod<ClientBinding>(&ControlClient::setMediaBalanceLevel), "handle"_a,
             "level"_a, kw, timeout)
        .def("set_media_sound_level", bindMethod<ClientBinding>(&ControlClient::setMediaSoundLevel), "handle"_a,
             "level"_a, kw, timeout)
        .def("set_media_mute", bindMethod<ClientBinding>(&ControlClient::setMediaMute), "handle"_a, "mute"_a, kw,
             timeout)
        .def("set_media_bass_level", bindMethod<ClientBinding>(&ControlClient::setMediaBassLevel), "handle"_a,
             "level"_a, kw, timeout)
        .def("set_media_treble_level", bindMethod<ClientBinding>(&ControlClient::setMediaTrebleLevel), "handle"_a,
             "level"_a, kw, timeout)
        // Service information
        .def("si_coding_format", bindMethod<ClientBinding>(&ControlClient::siCodingFormat), kw, timeout)
        .def("program_events", bindMethod<ClientBinding>(&ControlClient::programEvents), kw, timeout)
        .def("program_event", bindMethod<ClientBinding>(&ControlClient::programEvent), kw, timeout)
        .def("program_event_descriptors", bindMethod<ClientBinding>(&ControlClient::programEventDescriptors), "first"_a,
             "second"_a, kw, timeout)
        .def("ca_system_ids", bindMethod<ClientBinding>(&ControlClient::caSystemIds), kw, timeout)
        .def("is_protected_service", bindMethod<ClientBinding>(&ControlClient::isProtectedService), kw, timeout)
        .def("services", bindMethod<ClientBinding>(&ControlClient::services), kw, timeout)
        .def("current_service", bindMethod<ClientBinding>(&ControlClient::currentService), kw, timeout)
        .def("service_description", bindMethod<ClientBinding>(&ControlClient::serviceDescription), kw, timeout)
        .def("service_components", bindMethod<ClientBinding>(&ControlClient::serviceComponents), "service"_a, kw,
             timeout)
        .def("service_component_descriptors", bindMethod<ClientBinding>(&ControlClient::serviceComponentDescriptors),
             "component"_a, kw, timeout)
        .def("transport_stream", bindMethod<ClientBinding>(&ControlClient::transportStream), kw, timeout)
        .def("transport_stream_descriptors", bindMethod<ClientBinding>(&ControlClient::transportStreamDescriptors),
             "transport_stream"_a, kw, timeout)
        .def("network", bindMethod<ClientBinding>(&ControlClient::network), kw, timeout)
        .def("network_descriptors", bindMethod<ClientBinding>(&ControlClient::networkDescriptors), kw, timeout)
        .def("pmts", bindMethod<ClientBinding>(&ControlClient::pmts), "service"_a, kw, timeout)
        // Debugging
        .def("raw", bindMethod<ClientBinding>(&ControlClient::raw), "type"_a, "code"_a, "payload"_a = py::bytes(), kw,
             timeout);

    py::class_<EventIterator>(m, "EventIterator", "The events of a client, as client.events() hands them out.")
        .def("__iter__", [](py::object self) { return self; })
        .def("__next__", &EventIterator::next);
}

void defineDemuxClient(py::module_& m) {
    const auto timeout = ("timeout"_a = py::none());
    const auto kw = py::kw_only();
    auto cls = defineClientClass<DemuxBinding, DemuxClient, client::DemuxOptions>(
        m, "DemuxClient", "A client of the bridge's section-filter channel.", DEMUX_SOCKET_NAME);
    cls.def("start", bindMethod<DemuxBinding>(&DemuxClient::start), kw, timeout)
        .def("stop", bindMethod<DemuxBinding>(&DemuxClient::stop), kw, timeout)
        .def("set_pid", bindMethod<DemuxBinding>(&DemuxClient::setPid), "pid"_a, kw, timeout)
        .def("set_table_id", bindMethod<DemuxBinding>(&DemuxClient::setTableId), "table_id"_a, kw, timeout)
        .def("set_positive_filter", bindMethod<DemuxBinding>(&DemuxClient::setPositiveFilter), "argument"_a, "first"_a,
             "second"_a, kw, timeout)
        .def("set_greater_than_filter", bindMethod<DemuxBinding>(&DemuxClient::setGreaterThanFilter), "argument"_a,
             "first"_a, "second"_a, kw, timeout)
        .def("set_less_than_filter", bindMethod<DemuxBinding>(&DemuxClient::setLessThanFilter), "argument"_a, "first"_a,
             "second"_a, kw, timeout)
        .def("set_xor_filter", bindMethod<DemuxBinding>(&DemuxClient::setXorFilter), "argument"_a, "first"_a,
             "second"_a, "third"_a, kw, timeout)
        .def("set_time_out", bindMethod<DemuxBinding>(&DemuxClient::setTimeOut), "time_out"_a, kw, timeout)
        .def("clear_table_id", bindMethod<DemuxBinding>(&DemuxClient::clearTableId), kw, timeout)
        .def("clear_positive_filter", bindMethod<DemuxBinding>(&DemuxClient::clearPositiveFilter), kw, timeout)
        .def("clear_less_than_filter", bindMethod<DemuxBinding>(&DemuxClient::clearLessThanFilter), kw, timeout)
        .def("clear_xor_filter", bindMethod<DemuxBinding>(&DemuxClient::clearXorFilter), kw, timeout)
        .def("read_section", bindMethod<DemuxBinding>(&DemuxClient::readSection), kw, timeout);
}

}  // namespace
}  // namespace python
}  // namespace tessarine

PYBIND11_MODULE(_tessarine, m) {
    using namespace tessarine::python;
    m.doc() = "The tessarine client library: the application's side of the bridge.";
    defineErrors(m);
    defineClient(m);
    defineDemuxClient(m);
    // Clients still open when the interpreter exits are closed first.
    py::module_::import("atexit").attr("register")(py::cpp_function(&ClientBinding::closeAll));
}
