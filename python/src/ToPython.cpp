#include "ToPython.h"

#include "Errors.h"

namespace py = pybind11;
using namespace pybind11::literals;

namespace tessarine {
namespace python {

namespace {

// A dataclass of tessarine.records (imported once, then found in sys.modules).
py::object record(const char* name) { return py::module_::import("tessarine.records").attr(name); }

}  // namespace

py::object toPython(bool value) { return py::bool_(value); }
py::object toPython(std::int32_t value) { return py::int_(value); }
py::object toPython(std::uint8_t value) { return py::int_(value); }

py::object toPython(const std::string& text) {
    PyObject* decoded = PyUnicode_DecodeUTF8(text.data(), static_cast<Py_ssize_t>(text.size()), "replace");
    if (!decoded) throw py::error_already_set();
    return py::reinterpret_steal<py::object>(decoded);
}

py::object toPython(const std::vector<std::uint8_t>& bytes) {
    return py::bytes(reinterpret_cast<const char*>(bytes.data()), bytes.size());
}

py::object toPython(const client::Rectangle& r) {
    return record("Rectangle")("x"_a = r.x, "y"_a = r.y, "width"_a = r.width, "height"_a = r.height);
}

py::object toPython(const client::SystemProperty& p) {
    return record("SystemProperty")("name"_a = toPython(p.name), "value"_a = toPython(p.value));
}

py::object toPython(const client::ProgramEvent& e) {
    return record("ProgramEvent")(
        "value0"_a = e.value0, "value1"_a = e.value1, "value2"_a = e.value2, "value3"_a = e.value3,
        "value4"_a = e.value4, "value5"_a = e.value5, "value6"_a = e.value6, "text0"_a = toPython(e.text0),
        "text1"_a = toPython(e.text1), "text2"_a = toPython(e.text2), "bytes0"_a = toPython(e.bytes0),
        "bytes1"_a = toPython(e.bytes1), "bytes2"_a = toPython(e.bytes2), "strings0"_a = toPython(e.strings0),
        "strings1"_a = toPython(e.strings1), "strings2"_a = toPython(e.strings2));
}

py::object toPython(const client::Service& s) {
    return record("Service")("value0"_a = s.value0, "value1"_a = s.value1, "value2"_a = s.value2, "value3"_a = s.value3,
                             "value4"_a = s.value4, "text0"_a = toPython(s.text0));
}

py::object toPython(const client::ServiceComponent& c) {
    return record("ServiceComponent")("value0"_a = c.value0, "value1"_a = c.value1, "value2"_a = c.value2,
                                      "value3"_a = c.value3, "value4"_a = c.value4, "value5"_a = c.value5);
}

py::object toPython(const client::Descriptor& d) {
    return record("Descriptor")("id"_a = d.id, "data"_a = toPython(d.data));
}

py::object toPython(const client::Pmt& p) {
    return record("Pmt")("value0"_a = p.value0, "value1"_a = p.value1, "value2"_a = p.value2, "value3"_a = p.value3);
}

py::object toPython(const client::Network& n) {
    return record("Network")("value0"_a = n.value0, "text0"_a = toPython(n.text0));
}

py::object toPython(const client::TransportStream& t) {
    return record("TransportStream")("value0"_a = t.value0, "value1"_a = t.value1, "value2"_a = t.value2,
                                     "value3"_a = t.value3, "value4"_a = t.value4);
}

py::object toPython(const client::RawFrame& f) {
    return record("RawFrame")("is_record"_a = f.isRecord, "bytes"_a = toPython(f.bytes));
}

py::object toPython(const Event& event) {
    struct Visitor {
        py::object operator()(const client::DownloadComplete& e) const {
            return record("DownloadComplete")("first"_a = toPython(e.first), "second"_a = toPython(e.second));
        }
        py::object operator()(const client::GraphicsSettings& e) const {
            return record("GraphicsSettings")("first"_a = toPython(e.first), "second"_a = toPython(e.second));
        }
        py::object operator()(const client::EndOfMedia& e) const { return record("EndOfMedia")("handle"_a = e.handle); }
        py::object operator()(const client::DsmccCommand& e) const {
            return record("DsmccCommand")("code"_a = e.code, "value"_a = e.value, "byte"_a = e.byte,
                                          "text"_a = toPython(e.text));
        }
        py::object operator()(const AppStateAnswered& e) const {
            return record("AppStateRequest")("state"_a = e.state, "answer"_a = e.answer);
        }
        py::object operator()(const ConnectionEnded& e) const {
            return record("Disconnected")("error"_a = errorObject(e.error));
        }
    };
    return std::visit(Visitor{}, event);
}

}  // namespace python
}  // namespace tessarine
