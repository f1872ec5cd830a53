#include "sim/Scenario.h"

#include <cctype>
#include <cmath>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <limits>
#include <sstream>

#include <nlohmann/json.hpp>

namespace tessarine {
namespace sim {

namespace {

// ordered_json keeps the file's key order, so problems come out in the
// order in which a reader meets them.
using Json = nlohmann::ordered_json;

// Deeper documents are refused while parsing: everything after the parser
// (reports, copies) recurses per level. A scenario needs fewer than ten.
constexpr int MAX_DEPTH = 64;
// Timeline times end within a month, so every one converts to the clock's
// nanoseconds exactly; a repeat period under a millisecond would flood the client.
constexpr double MAX_SECONDS = 30 * 24 * 3600;
constexpr double MIN_PERIOD = 0.001;

// The nesting check as a pass of its own, before the document is built: the
// parser's per-value callback would also rescan each container's members
// whenever one of them ends, quadratic in a list's length.
class DepthCheck final : public nlohmann::json_sax<Json> {
public:
    bool tooDeep = false;

    bool start_object(std::size_t) override { return open(); }
    bool start_array(std::size_t) override { return open(); }
    bool end_object() override { return close(); }
    bool end_array() override { return close(); }
    bool null() override { return true; }
    bool boolean(bool) override { return true; }
    bool number_integer(number_integer_t) override { return true; }
    bool number_unsigned(number_unsigned_t) override { return true; }
    bool number_float(number_float_t, const string_t&) override { return true; }
    bool string(string_t&) override { return true; }
    bool binary(binary_t&) override { return true; }
    bool key(string_t&) override { return true; }
    // Syntax errors are reported by the parse that follows.
    bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception&) override { return false; }

private:
    bool open() {
        tooDeep = ++depth_ > MAX_DEPTH;
        return !tooDeep;
    }
    bool close() {
        --depth_;
        return true;
    }
    int depth_ = 0;
};

std::string describe(const Json& value) {
    std::string text = value.dump();
    if (text.size() > 40) text = text.substr(0, 37) + "...";
    switch (value.type()) {
        case Json::value_t::null: return "null";
        case Json::value_t::object: return "an object";
        case Json::value_t::array: return "an array";
        case Json::value_t::string: return "string " + text;
        case Json::value_t::boolean: return "boolean " + text;
        default: return "number " + text;
    }
}

// Walks the document, converting what is valid and recording every problem.
// Each reader takes the value and its path; it reports and returns a
// default when the value is unusable, so one pass finds every problem.
class Reader {
public:
    explicit Reader(std::vector<ScenarioProblem>& problems) : problems_(problems) {}

    void problem(const std::string& path, const std::string& expected, const std::string& found) {
        problems_.push_back({path, expected, found});
    }

    // An object whose keys are all in `known`; false when it is no object.
    bool object(const Json& value, const std::string& path, std::initializer_list<const char*> known) {
        if (!value.is_object()) {
            problem(path, "an object", describe(value));
            return false;
        }
        for (const auto& item : value.items()) {
            bool ok = false;
            for (const char* key : known) ok = ok || item.key() == key;
            if (!ok) problem(path + "." + item.key(), "no such key (known: " + list(known) + ")", "an unknown key");
        }
        return true;
    }

    // Calls `read` for the member `key` when present; reports it missing when required.
    void member(const Json& object, const std::string& path, const char* key, bool required,
                const std::function<void(const Json&, const std::string&)>& read) {
        if (!object.is_object()) return;
        auto it = object.find(key);
        if (it == object.end()) {
            if (required) problem(path + "." + key, "a value (required)", "nothing");
            return;
        }
        read(*it, path + "." + key);
    }

    void array(const Json& value, const std::string& path, const std::function<void(const Json&, const std::string&)>& read) {
        if (!value.is_array()) {
            problem(path, "an array", describe(value));
            return;
        }
        for (std::size_t i = 0; i < value.size(); ++i) read(value[i], path + "[" + std::to_string(i) + "]");
    }

    std::int64_t integer(const Json& value, const std::string& path, std::int64_t low, std::int64_t high,
                         const char* expected = "an integer") {
        if (!value.is_number_integer()) {
            problem(path, expected, describe(value));
            return 0;
        }
        if (value.is_number_unsigned() && value.get<std::uint64_t>() > static_cast<std::uint64_t>(high)) {
            problem(path, std::string(expected) + " from " + std::to_string(low) + " to " + std::to_string(high), describe(value));
            return 0;
        }
        std::int64_t result = value.get<std::int64_t>();
        if (result < low || result > high) {
            problem(path, std::string(expected) + " from " + std::to_string(low) + " to " + std::to_string(high), describe(value));
            return 0;
        }
        return result;
    }

    int int32(const Json& value, const std::string& path) {
        return static_cast<int>(integer(value, path, std::numeric_limits<std::int32_t>::min(),
                                        std::numeric_limits<std::int32_t>::max(), "a 32-bit integer"));
    }

    // A time of the timeline from `low` to MAX_SECONDS.
    double seconds(const Json& value, const std::string& path, double low) {
        if (!value.is_number() || !(value.get<double>() >= low && value.get<double>() <= MAX_SECONDS)) {
            std::ostringstream expected;
            expected << "a number of seconds from " << low << " to " << static_cast<long>(MAX_SECONDS) << " (30 days)";
            problem(path, expected.str(), describe(value));
            return 0;
        }
        return value.get<double>();
    }

    double real(const Json& value, const std::string& path) {
        if (!value.is_number()) {
            problem(path, "a number", describe(value));
            return 0;
        }
        return value.get<double>();
    }

    bool boolean(const Json& value, const std::string& path) {
        if (!value.is_boolean()) {
            problem(path, "true or false", describe(value));
            return false;
        }
        return value.get<bool>();
    }

    std::string string(const Json& value, const std::string& path) {
        if (!value.is_string()) {
            problem(path, "a string", describe(value));
            return {};
        }
        return value.get<std::string>();
    }

    // Hex digits in pairs; blanks between bytes are allowed for reading.
    // Nothing when the text is no such thing.
    std::optional<std::vector<unsigned char>> hex(const Json& value, const std::string& path) {
        const char* expected = "hex bytes (pairs of 0-9 a-f, blanks allowed between bytes)";
        if (!value.is_string()) {
            problem(path, expected, describe(value));
            return std::nullopt;
        }
        const std::string text = value.get<std::string>();
        std::vector<unsigned char> bytes;
        for (std::size_t i = 0; i < text.size();) {
            if (std::isspace(static_cast<unsigned char>(text[i]))) {
                ++i;
                continue;
            }
            if (i + 1 >= text.size() || !std::isxdigit(static_cast<unsigned char>(text[i])) ||
                !std::isxdigit(static_cast<unsigned char>(text[i + 1]))) {
                problem(path, expected, describe(value));
                return std::nullopt;
            }
            bytes.push_back(static_cast<unsigned char>(std::stoi(text.substr(i, 2), nullptr, 16)));
            i += 2;
        }
        return bytes;
    }

    ipcutil::Rectangle_t rectangle(const Json& value, const std::string& path) {
        ipcutil::Rectangle_t result{};
        if (!object(value, path, {"x", "y", "width", "height"})) return result;
        member(value, path, "x", true, [&](const Json& v, const std::string& p) { result.x = int32(v, p); });
        member(value, path, "y", true, [&](const Json& v, const std::string& p) { result.y = int32(v, p); });
        member(value, path, "width", true, [&](const Json& v, const std::string& p) { result.width = int32(v, p); });
        member(value, path, "height", true, [&](const Json& v, const std::string& p) { result.height = int32(v, p); });
        return result;
    }

    std::list<int> ints(const Json& value, const std::string& path) {
        std::list<int> result;
        array(value, path, [&](const Json& v, const std::string& p) { result.push_back(int32(v, p)); });
        return result;
    }

    std::list<std::string> strings(const Json& value, const std::string& path) {
        std::list<std::string> result;
        array(value, path, [&](const Json& v, const std::string& p) { result.push_back(string(v, p)); });
        return result;
    }

    std::list<unsigned char> byteList(const Json& value, const std::string& path) {
        auto bytes = hex(value, path).value_or(std::vector<unsigned char>{});
        return {bytes.begin(), bytes.end()};
    }

    // Optional int32 fields named in `fields`, written through the pointers.
    void int32Fields(const Json& value, const std::string& path, std::initializer_list<std::pair<const char*, int*>> fields) {
        for (const auto& field : fields)
            member(value, path, field.first, false, [&](const Json& v, const std::string& p) { *field.second = int32(v, p); });
    }
    void stringFields(const Json& value, const std::string& path,
                      std::initializer_list<std::pair<const char*, std::string*>> fields) {
        for (const auto& field : fields)
            member(value, path, field.first, false, [&](const Json& v, const std::string& p) { *field.second = string(v, p); });
    }

private:
    static std::string list(std::initializer_list<const char*> keys) {
        std::string text;
        for (const char* key : keys) text += (text.empty() ? "" : ", ") + std::string(key);
        return text;
    }

    std::vector<ScenarioProblem>& problems_;
};

using Read = std::function<void(const Json&, const std::string&)>;

void readVideo(Reader& r, const Json& value, const std::string& path, VideoSettings& video) {
    if (!r.object(value, path, {"bounds", "language3", "language5", "languages", "rates", "cropValues"})) return;
    r.member(value, path, "bounds", false, [&](const Json& v, const std::string& p) { video.bounds = r.rectangle(v, p); });
    r.stringFields(value, path, {{"language3", &video.language3}, {"language5", &video.language5}});
    r.member(value, path, "languages", false, [&](const Json& v, const std::string& p) { video.languages = r.strings(v, p); });
    r.member(value, path, "rates", false, [&](const Json& v, const std::string& p) {
        if (!v.is_array() || v.size() != video.rates.size()) {
            r.problem(p, "an array of 8 integers (the rates 9 to 16)", v.is_array() ? "an array of " + std::to_string(v.size()) : describe(v));
            return;
        }
        for (std::size_t i = 0; i < video.rates.size(); ++i) video.rates[i] = r.int32(v[i], p + "[" + std::to_string(i) + "]");
    });
    r.member(value, path, "cropValues", false, [&](const Json& v, const std::string& p) {
        if (!v.is_array() || v.size() != 2) {
            r.problem(p, "an array of 2 rectangles", v.is_array() ? "an array of " + std::to_string(v.size()) : describe(v));
            return;
        }
        for (std::size_t i = 0; i < 2; ++i) video.cropValues[i] = r.rectangle(v[i], p + "[" + std::to_string(i) + "]");
    });
}

void readTuner(Reader& r, const Json& value, const std::string& path, TunerSettings& tuner) {
    if (!r.object(value, path, {"currentTransportStreamId", "idLists", "channels"})) return;
    r.int32Fields(value, path, {{"currentTransportStreamId", &tuner.currentTransportStreamId}});
    r.member(value, path, "idLists", false, [&](const Json& v, const std::string& p) {
        r.array(v, p, [&](const Json& e, const std::string& ep) {
            TunerSettings::IdList list;
            if (!r.object(e, ep, {"kind", "parameter", "ids"})) return;
            r.member(e, ep, "kind", true, [&](const Json& k, const std::string& kp) {
                list.kind = static_cast<int>(r.integer(k, kp, 1, 4, "a list kind"));
            });
            r.member(e, ep, "parameter", false, [&](const Json& k, const std::string& kp) { list.parameter = r.int32(k, kp); });
            r.member(e, ep, "ids", true, [&](const Json& k, const std::string& kp) { list.ids = r.ints(k, kp); });
            tuner.idLists.push_back(list);
        });
    });
    r.member(value, path, "channels", false, [&](const Json& v, const std::string& p) {
        r.array(v, p, [&](const Json& e, const std::string& ep) {
            TunerSettings::Channel channel;
            if (!r.object(e, ep, {"for", "name", "number"})) return;
            r.member(e, ep, "for", true, [&](const Json& k, const std::string& kp) {
                if (!k.is_array() || k.size() != 2) {
                    r.problem(kp, "an array of 2 integers", describe(k));
                    return;
                }
                channel.first = r.int32(k[0], kp + "[0]");
                channel.second = r.int32(k[1], kp + "[1]");
            });
            r.stringFields(e, ep, {{"name", &channel.name}});
            r.int32Fields(e, ep, {{"number", &channel.number}});
            tuner.channels.push_back(channel);
        });
    });
}

void readCarousels(Reader& r, const Json& value, const std::string& path, std::vector<CarouselSettings>& carousels) {
    r.array(value, path, [&](const Json& e, const std::string& ep) {
        CarouselSettings carousel;
        if (!r.object(e, ep, {"name", "mount", "downloads"})) return;
        r.member(e, ep, "name", true, [&](const Json& v, const std::string& p) { carousel.name = r.string(v, p); });
        r.member(e, ep, "mount", true, [&](const Json& v, const std::string& p) { carousel.mountAnswer = r.string(v, p); });
        r.member(e, ep, "downloads", false, [&](const Json& v, const std::string& p) {
            r.array(v, p, [&](const Json& d, const std::string& dp) {
                CarouselSettings::Download download;
                if (!r.object(d, dp, {"after", "first", "second"})) return;
                r.member(d, dp, "after", true, [&](const Json& x, const std::string& xp) { download.after = r.seconds(x, xp, 0); });
                r.member(d, dp, "first", true, [&](const Json& x, const std::string& xp) { download.first = r.string(x, xp); });
                r.stringFields(d, dp, {{"second", &download.second}});
                carousel.downloads.push_back(download);
            });
        });
        carousels.push_back(carousel);
    });
}

std::list<middlewarefacade::Descriptors_> readDescriptors(Reader& r, const Json& value, const std::string& path) {
    std::list<middlewarefacade::Descriptors_> result;
    r.array(value, path, [&](const Json& e, const std::string& ep) {
        middlewarefacade::Descriptors_ descriptor{0, {}};
        if (!r.object(e, ep, {"id", "data"})) return;
        r.member(e, ep, "id", true, [&](const Json& v, const std::string& p) {
            descriptor.id = static_cast<unsigned short>(r.integer(v, p, 0, 0xFFFF, "a descriptor id"));
        });
        r.member(e, ep, "data", true, [&](const Json& v, const std::string& p) { descriptor.data = r.byteList(v, p); });
        result.push_back(descriptor);
    });
    return result;
}

// Lists of `[{"for": KEY, ITEMS: [...]}]`, gathered into a map by key.
template <typename Key, typename Item>
void readKeyed(Reader& r, const Json& value, const std::string& path, const char* items,
               const std::function<Key(const Json&, const std::string&)>& readKey,
               const std::function<std::list<Item>(const Json&, const std::string&)>& readItems,
               std::map<Key, std::list<Item>>& into) {
    r.array(value, path, [&](const Json& e, const std::string& ep) {
        if (!r.object(e, ep, {"for", items})) return;
        Key key{};
        std::list<Item> list;
        r.member(e, ep, "for", true, [&](const Json& v, const std::string& p) { key = readKey(v, p); });
        r.member(e, ep, items, true, [&](const Json& v, const std::string& p) { list = readItems(v, p); });
        auto& target = into[key];
        target.splice(target.end(), list);
    });
}

middlewarefacade::ProgramEvent_ readProgramEvent(Reader& r, const Json& e, const std::string& ep) {
    middlewarefacade::ProgramEvent_ event{0, 0, 0, 0, {}, {}, {}, 0, 0, 0, 0, {}, {}, {}, {}, {}, {}};
    if (!r.object(e, ep, {"value0", "value1", "value2", "value3", "value4", "value5", "value6", "text0", "text1",
                          "text2", "bytes0", "bytes1", "bytes2", "strings0", "strings1", "strings2"}))
        return event;
    r.int32Fields(e, ep, {{"value0", &event.value0}, {"value1", &event.value1}, {"value2", &event.value2},
                          {"value3", &event.value3}, {"value4", &event.value4}, {"value5", &event.value5},
                          {"value6", &event.value6}});
    r.stringFields(e, ep, {{"text0", &event.text0}, {"text1", &event.text1}, {"text2", &event.text2}});
    const std::pair<const char*, std::list<unsigned char>*> bytes[] = {
        {"bytes0", &event.bytes0}, {"bytes1", &event.bytes1}, {"bytes2", &event.bytes2}};
    for (const auto& field : bytes)
        r.member(e, ep, field.first, false, [&](const Json& v, const std::string& p) { *field.second = r.byteList(v, p); });
    const std::pair<const char*, std::list<std::string>*> strings[] = {
        {"strings0", &event.strings0}, {"strings1", &event.strings1}, {"strings2", &event.strings2}};
    for (const auto& field : strings)
        r.member(e, ep, field.first, false, [&](const Json& v, const std::string& p) { *field.second = r.strings(v, p); });
    return event;
}

void readSiDescriptors(Reader& r, const Json& value, const std::string& path, SiTables& si) {
    if (!r.object(value, path, {"network", "transportStream", "service", "programEvent", "serviceComponent"})) return;
    const std::function<int(const Json&, const std::string&)> intKey = [&](const Json& v, const std::string& p) {
        return r.int32(v, p);
    };
    const std::function<std::pair<int, int>(const Json&, const std::string&)> pairKey = [&](const Json& v,
                                                                                            const std::string& p) {
        if (!v.is_array() || v.size() != 2) {
            r.problem(p, "an array of 2 integers", describe(v));
            return std::pair<int, int>{};
        }
        return std::pair<int, int>{r.int32(v[0], p + "[0]"), r.int32(v[1], p + "[1]")};
    };
    const std::function<std::list<middlewarefacade::Descriptors_>(const Json&, const std::string&)> descriptors =
        [&](const Json& v, const std::string& p) { return readDescriptors(r, v, p); };
    r.member(value, path, "network", false, [&](const Json& v, const std::string& p) { si.networkDescriptors = readDescriptors(r, v, p); });
    const std::pair<const char*, std::map<int, std::list<middlewarefacade::Descriptors_>>*> keyed[] = {
        {"transportStream", &si.transportStreamDescriptors},
        {"service", &si.serviceDescriptors},
        {"serviceComponent", &si.serviceComponentDescriptors}};
    for (const auto& field : keyed)
        r.member(value, path, field.first, false, [&](const Json& v, const std::string& p) {
            readKeyed(r, v, p, "descriptors", intKey, descriptors, *field.second);
        });
    r.member(value, path, "programEvent", false, [&](const Json& v, const std::string& p) {
        readKeyed(r, v, p, "descriptors", pairKey, descriptors, si.programEventDescriptors);
    });
}

void readSi(Reader& r, const Json& value, const std::string& path, SiTables& si) {
    if (!r.object(value, path, {"codingFormat", "serviceDescription", "currentService", "protected", "caSystemIds",
                                "services", "programEvents", "programEvent", "serviceComponents", "pmts",
                                "transportStream", "network", "descriptors"}))
        return;
    r.stringFields(value, path, {{"codingFormat", &si.codingFormat}, {"serviceDescription", &si.serviceDescription}});
    r.int32Fields(value, path, {{"currentService", &si.currentService}});
    r.member(value, path, "protected", false, [&](const Json& v, const std::string& p) { si.protectedService = r.boolean(v, p); });
    r.member(value, path, "caSystemIds", false, [&](const Json& v, const std::string& p) { si.caSystemIds = r.ints(v, p); });
    r.member(value, path, "services", false, [&](const Json& v, const std::string& p) {
        r.array(v, p, [&](const Json& e, const std::string& ep) {
            middlewarefacade::Service_ service{0, 0, 0, {}, 0, 0, {}};
            if (!r.object(e, ep, {"value0", "value1", "value2", "value3", "value4", "text0", "text1"})) return;
            r.int32Fields(e, ep, {{"value0", &service.value0}, {"value1", &service.value1}, {"value2", &service.value2},
                                  {"value3", &service.value3}, {"value4", &service.value4}});
            r.stringFields(e, ep, {{"text0", &service.text0}, {"text1", &service.text1}});
            si.services.push_back(service);
        });
    });
    r.member(value, path, "programEvents", false, [&](const Json& v, const std::string& p) {
        r.array(v, p, [&](const Json& e, const std::string& ep) {
            si.programEvents.push_back(readProgramEvent(r, e, ep));
        });
    });
    r.member(value, path, "programEvent", false, [&](const Json& v, const std::string& p) { si.programEvent = readProgramEvent(r, v, p); });
    const std::function<int(const Json&, const std::string&)> intKey = [&](const Json& v, const std::string& p) {
        return r.int32(v, p);
    };
    r.member(value, path, "serviceComponents", false, [&](const Json& v, const std::string& p) {
        const std::function<std::list<middlewarefacade::ServiceComponent_>(const Json&, const std::string&)> items =
            [&](const Json& list, const std::string& lp) {
                std::list<middlewarefacade::ServiceComponent_> result;
                r.array(list, lp, [&](const Json& e, const std::string& ep) {
                    middlewarefacade::ServiceComponent_ c{0, 0, 0, 0, 0, 0};
                    if (!r.object(e, ep, {"value0", "value1", "value2", "value3", "value4", "value5"})) return;
                    r.int32Fields(e, ep, {{"value0", &c.value0}, {"value1", &c.value1}, {"value2", &c.value2},
                                          {"value3", &c.value3}, {"value4", &c.value4}, {"value5", &c.value5}});
                    result.push_back(c);
                });
                return result;
            };
        readKeyed(r, v, p, "components", intKey, items, si.serviceComponents);
    });
    r.member(value, path, "pmts", false, [&](const Json& v, const std::string& p) {
        const std::function<std::list<middlewarefacade::PMT_>(const Json&, const std::string&)> items =
            [&](const Json& list, const std::string& lp) {
                std::list<middlewarefacade::PMT_> result;
                r.array(list, lp, [&](const Json& e, const std::string& ep) {
                    middlewarefacade::PMT_ pmt{0, 0, 0, 0};
                    if (!r.object(e, ep, {"value0", "value1", "value2", "value3"})) return;
                    r.int32Fields(e, ep, {{"value0", &pmt.value0}, {"value1", &pmt.value1}, {"value2", &pmt.value2},
                                          {"value3", &pmt.value3}});
                    result.push_back(pmt);
                });
                return result;
            };
        readKeyed(r, v, p, "entries", intKey, items, si.pmts);
    });
    r.member(value, path, "transportStream", false, [&](const Json& e, const std::string& ep) {
        auto& ts = si.transportStream;
        ts = {0, 0, {}, 0, 0, 0, 0};
        if (!r.object(e, ep, {"value0", "value1", "value2", "value3", "value4", "text0"})) return;
        r.int32Fields(e, ep, {{"value0", &ts.value0}, {"value1", &ts.value1}, {"value2", &ts.value2},
                              {"value3", &ts.value3}, {"value4", &ts.value4}});
        r.stringFields(e, ep, {{"text0", &ts.text0}});
    });
    r.member(value, path, "network", false, [&](const Json& e, const std::string& ep) {
        si.network = {{}, 0};
        if (!r.object(e, ep, {"value0", "text0"})) return;
        r.int32Fields(e, ep, {{"value0", &si.network.value0}});
        r.stringFields(e, ep, {{"text0", &si.network.text0}});
    });
    r.member(value, path, "descriptors", false, [&](const Json& v, const std::string& p) { readSiDescriptors(r, v, p, si); });
}

void readTimeline(Reader& r, const Json& root, Scenario& scenario) {
    r.member(root, "$", "streamEvents", false, [&](const Json& v, const std::string& p) {
        r.array(v, p, [&](const Json& e, const std::string& ep) {
            StreamEvent event;
            if (!r.object(e, ep, {"at", "every", "name", "code", "value", "byte", "text"})) return;
            r.member(e, ep, "at", true, [&](const Json& x, const std::string& xp) { event.at = r.seconds(x, xp, 0); });
            r.member(e, ep, "every", false, [&](const Json& x, const std::string& xp) { event.every = r.seconds(x, xp, MIN_PERIOD); });
            r.stringFields(e, ep, {{"name", &event.name}, {"text", &event.command.commandText}});
            r.member(e, ep, "code", true, [&](const Json& x, const std::string& xp) { event.command.commandCode = r.int32(x, xp); });
            r.member(e, ep, "value", false, [&](const Json& x, const std::string& xp) {
                event.command.commandValue = r.integer(x, xp, std::numeric_limits<std::int64_t>::min(),
                                                       std::numeric_limits<std::int64_t>::max(), "a 64-bit integer");
            });
            r.member(e, ep, "byte", false, [&](const Json& x, const std::string& xp) {
                event.command.commandByte = static_cast<unsigned char>(
                    r.integer(x, xp, 0, std::numeric_limits<unsigned char>::max(), "a byte"));
            });
            scenario.streamEvents.push_back(event);
        });
    });
    r.member(root, "$", "graphics", false, [&](const Json& v, const std::string& p) {
        r.array(v, p, [&](const Json& e, const std::string& ep) {
            GraphicsChange change;
            if (!r.object(e, ep, {"at", "first", "second"})) return;
            r.member(e, ep, "at", true, [&](const Json& x, const std::string& xp) { change.at = r.seconds(x, xp, 0); });
            r.member(e, ep, "first", true, [&](const Json& x, const std::string& xp) { change.first = r.rectangle(x, xp); });
            r.member(e, ep, "second", true, [&](const Json& x, const std::string& xp) { change.second = r.rectangle(x, xp); });
            scenario.graphics.push_back(change);
        });
    });
}

}  // namespace

Scenario Scenario::parse(const std::string& text, std::vector<ScenarioProblem>& problems) {
    Scenario scenario;
    DepthCheck depth;
    Json::sax_parse(text, &depth);
    if (depth.tooDeep) {
        problems.push_back({"$", "JSON nested at most " + std::to_string(MAX_DEPTH) + " deep",
                            "JSON nested deeper than " + std::to_string(MAX_DEPTH)});
        return scenario;
    }
    Json root;
    try {
        root = Json::parse(text);
    } catch (const Json::exception& error) {  // syntax, and numbers beyond a double
        problems.push_back({"$", "valid JSON", error.what()});
        return scenario;
    }
    Reader r(problems);
    if (!r.object(root, "$", {"video", "properties", "tuner", "carousels", "si", "versionFlags", "media",
                              "streamEvents", "graphics", "sections", "ts"}))
        return scenario;
    r.member(root, "$", "video", false, [&](const Json& v, const std::string& p) { readVideo(r, v, p, scenario.video); });
    r.member(root, "$", "properties", false, [&](const Json& v, const std::string& p) {
        if (!v.is_object()) {
            r.problem(p, "an object of names and string values", describe(v));
            return;
        }
        for (const auto& item : v.items())
            scenario.properties.push_back({item.key(), r.string(item.value(), p + "." + item.key())});
    });
    r.member(root, "$", "tuner", false, [&](const Json& v, const std::string& p) { readTuner(r, v, p, scenario.tuner); });
    r.member(root, "$", "carousels", false, [&](const Json& v, const std::string& p) { readCarousels(r, v, p, scenario.carousels); });
    r.member(root, "$", "si", false, [&](const Json& v, const std::string& p) { readSi(r, v, p, scenario.si); });
    r.member(root, "$", "versionFlags", false, [&](const Json& v, const std::string& p) {
        auto flags = r.ints(v, p);
        scenario.versionFlags.assign(flags.begin(), flags.end());
    });
    r.member(root, "$", "media", false, [&](const Json& v, const std::string& p) {
        r.array(v, p, [&](const Json& e, const std::string& ep) {
            MediaItem item;
            if (!r.object(e, ep, {"locator", "duration"})) return;
            r.member(e, ep, "locator", true, [&](const Json& x, const std::string& xp) { item.locator = r.string(x, xp); });
            r.member(e, ep, "duration", true, [&](const Json& x, const std::string& xp) {
                item.duration = static_cast<int>(r.integer(x, xp, 1, std::numeric_limits<std::int32_t>::max(),
                                                           "a duration in milliseconds"));
            });
            scenario.media.push_back(item);
        });
    });
    readTimeline(r, root, scenario);
    r.member(root, "$", "sections", false, [&](const Json& v, const std::string& p) {
        r.array(v, p, [&](const Json& e, const std::string& ep) {
            Section section;
            if (!r.object(e, ep, {"pid", "data"})) return;
            r.member(e, ep, "pid", true, [&](const Json& x, const std::string& xp) {
                section.pid = static_cast<int>(r.integer(x, xp, 0, 0x1FFF, "a PID"));
            });
            r.member(e, ep, "data", true, [&](const Json& x, const std::string& xp) {
                auto bytes = r.hex(x, xp);
                if (bytes && bytes->empty()) r.problem(xp, "at least one byte (the table id)", "none");
                if (bytes && !bytes->empty()) section.data = std::move(*bytes);
            });
            scenario.sections.push_back(section);
        });
    });
    r.member(root, "$", "ts", false, [&](const Json& v, const std::string& p) {
        scenario.ts = r.string(v, p);
        if (v.is_string() && scenario.ts.empty()) r.problem(p, "a file, \"-\" or udp://ADDR:PORT", "an empty string");
    });
    return scenario;
}

}  // namespace sim
}  // namespace tessarine
