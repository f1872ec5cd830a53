// Sub-commands of the control channel: version, video, property, audio,
// tuner, carousel, media, si and raw.
#include <cstring>
#include <future>
#include <limits>
#include <map>
#include <memory>

#include "Context.h"
#include "tessarine/protocol/Codes.h"
#include "tessarine/protocol/Offsets.h"
#include "../wireshark/WireNames.h"

namespace cli {

using namespace tessarine::client;

namespace {

template <typename T>
Json optional(const std::optional<T>& value) {
    return value ? Json(*value) : Json(nullptr);
}

Json programEvent(const ProgramEvent& e) {
    return Json{{"value0", e.value0},   {"value1", e.value1},   {"value2", e.value2},     {"value3", e.value3},
                {"value4", e.value4},   {"value5", e.value5},   {"value6", e.value6},     {"text0", e.text0},
                {"text1", e.text1},     {"text2", e.text2},     {"bytes0", toHex(e.bytes0)}, {"bytes1", toHex(e.bytes1)},
                {"bytes2", toHex(e.bytes2)}, {"strings0", e.strings0}, {"strings1", e.strings1}, {"strings2", e.strings2}};
}

Json descriptors(const std::vector<Descriptor>& list) {
    Json rows = Json::array();
    for (const auto& d : list) rows.push_back(Json{{"id", d.id}, {"length", d.data.size()}, {"data", toHex(d.data)}});
    return rows;
}

template <typename T, typename Row>
Json rows(const std::vector<T>& list, Row row) {
    Json out = Json::array();
    for (const auto& item : list) out.push_back(row(item));
    return out;
}

// Adds "NAME X Y WIDTH HEIGHT" positionals.
void addRectangle(CLI::App* command, Rectangle& r, bool required) {
    for (auto [name, field] : {std::pair{"x", &r.x}, {"y", &r.y}, {"width", &r.width}, {"height", &r.height}}) {
        auto* option = command->add_option(name, *field, name);
        if (required) option->required();
    }
}

// Optional bounds come as all four values or none.
bool wholeRectangle(CLI::App* command) {
    return command->count("x") == command->count("height");
}

void addVideo(CLI::App& app, Context& c) {
    auto* video = app.add_subcommand("video", "main video and graphics")->require_subcommand(1);
    static Rectangle bounds{};
    auto* b = video->add_subcommand("bounds", "show the main video bounds, or set them when four values are given");
    addRectangle(b, bounds, false);
    b->callback([&c, b] {
        if (!wholeRectangle(b)) return c.usage("bounds take x y width height, or nothing to read them");
        if (b->count("height") == 0) return c.emit(c.control().videoBounds(), rectangleJson);
        c.emit(c.control().setVideoBounds(bounds));
    });
    video->add_subcommand("reset", "reset the main video")->callback([&c] { c.emit(c.control().resetVideo()); });
    static int which = tessarine::VIDEO_GET_LANGUAGE_3;
    auto* language = video->add_subcommand("language", "one language query (" +
                                                           std::to_string(tessarine::VIDEO_GET_LANGUAGE_3) + " or " +
                                                           std::to_string(tessarine::VIDEO_GET_LANGUAGE_5) + ")");
    language->add_option("which", which)
        ->required()
        ->check(CLI::IsMember({tessarine::VIDEO_GET_LANGUAGE_3, tessarine::VIDEO_GET_LANGUAGE_5}));
    language->callback([&c] { c.emit(c.control().videoLanguage(which), [](const std::string& s) { return Json(s); }); });
    video->add_subcommand("languages", "list the video languages")->callback([&c] {
        c.emit(c.control().videoLanguages(), [](const std::vector<std::string>& l) { return Json(l); });
    });
    static std::string text;
    auto* t = video->add_subcommand(
        "text", "send the video text (at most " + std::to_string(tessarine::TEXT_FIELD_CHARACTERS) + " characters)");
    t->add_option("text", text)->required();
    t->callback([&c] { c.emit(c.control().setVideoText(text)); });
    static int flagWhich = tessarine::VIDEO_SET_FLAG_7;
    static bool flag = false;
    auto* f = video->add_subcommand("flag", "set video flag " + std::to_string(tessarine::VIDEO_SET_FLAG_7) + " or " +
                                                std::to_string(tessarine::VIDEO_SET_FLAG_8));
    f->add_option("which", flagWhich)
        ->required()
        ->check(CLI::IsMember({tessarine::VIDEO_SET_FLAG_7, tessarine::VIDEO_SET_FLAG_8}));
    addSwitch(*f, flag);
    f->callback([&c] { c.emit(c.control().setVideoFlag(flagWhich, flag)); });
    static int rate = tessarine::VIDEO_GET_RATE_9;
    auto* r = video->add_subcommand("rate", "one rate query (" + std::to_string(tessarine::VIDEO_GET_RATE_9) + " to " +
                                                std::to_string(tessarine::VIDEO_GET_RATE_16) + ")");
    r->add_option("which", rate)->required()->check(CLI::Range(tessarine::VIDEO_GET_RATE_9, tessarine::VIDEO_GET_RATE_16));
    r->callback([&c] { c.emit(c.control().videoRate(rate), optional<std::int32_t>); });
    video->add_subcommand("graphics", "apply the graphics settings")->callback([&c] {
        c.emit(c.control().applyGraphicsSettings());
    });
    static Rectangle region{};
    auto* g = video->add_subcommand("region", "update the graphics region");
    addRectangle(g, region, true);
    g->callback([&c] { c.emit(c.control().updateGraphicsRegion(region)); });
}

void addProperty(CLI::App& app, Context& c) {
    auto* property = app.add_subcommand("property", "system properties")->require_subcommand(1);
    static std::string name, value;
    auto* get = property->add_subcommand("get", "show one property (null when unknown)");
    get->add_option("name", name)->required();
    get->callback([&c] {
        c.emitOrNothing(c.control().systemProperty(name), [](const std::optional<std::string>& v) {
            return Json{{"name", name}, {"value", optional(v)}};
        });
    });
    property->add_subcommand("list", "list all properties")->callback([&c] {
        c.emit(c.control().systemProperties(), [](const std::vector<SystemProperty>& list) {
            return rows(list, [](const SystemProperty& p) { return Json{{"name", p.name}, {"value", p.value}}; });
        });
    });
    auto* set = property->add_subcommand("set", "set a property");
    set->add_option("name", name)->required();
    set->add_option("value", value)->required();
    set->callback([&c] { c.emit(c.control().setSystemProperty(name, value)); });
    auto* remove = property->add_subcommand("remove", "remove a property");
    remove->add_option("name", name)->required();
    remove->callback([&c] { c.emit(c.control().removeSystemProperty(name)); });
}

void addAudio(CLI::App& app, Context& c) {
    auto* audio = app.add_subcommand("audio", "audio of the main video")->require_subcommand(1);
    static double level = 0;
    using Setter = Result<void> (ControlClient::*)(double, Timeout);
    for (auto [name, setter] : {std::pair<const char*, Setter>{"sound", &ControlClient::setSoundLevel},
                                {"balance", &ControlClient::setBalanceLevel},
                                {"bass", &ControlClient::setBassLevel},
                                {"treble", &ControlClient::setTrebleLevel}}) {
        auto* command = audio->add_subcommand(name, std::string("set the ") + name + " level");
        command->add_option("level", level, "a double, passed on unscaled")->required();
        command->callback([&c, setter = setter] { c.emit((c.control().*setter)(level, {})); });
    }
    static bool mute = false;
    auto* m = audio->add_subcommand("mute", "mute or unmute");
    addSwitch(*m, mute);
    m->callback([&c] { c.emit(c.control().setMute(mute)); });
}

void addTunerAndCarousel(CLI::App& app, Context& c) {
    auto* tuner = app.add_subcommand("tuner", "tuner identifiers")->require_subcommand(1);
    tuner->add_subcommand("ts", "the current transport stream id")->callback([&c] {
        c.emit(c.control().currentTransportStreamId(), optional<std::int32_t>);
    });
    static int kind = tessarine::TUNER_IDS_1, parameter = 0;
    auto* ids = tuner->add_subcommand("ids", "identifiers of a kind (" + std::to_string(tessarine::TUNER_IDS_1) +
                                                 " to " + std::to_string(tessarine::TUNER_IDS_4) + ") for a parameter");
    ids->add_option("kind", kind)->required()->check(CLI::Range(tessarine::TUNER_IDS_1, tessarine::TUNER_IDS_4));
    ids->add_option("parameter", parameter)->required();
    ids->callback([&c] { c.emit(c.control().tunerIds(kind, parameter), [](const auto& l) { return Json(l); }); });

    auto* carousel = app.add_subcommand("carousel", "object carousels")->require_subcommand(1);
    static std::string name;
    auto* mount = carousel->add_subcommand("mount", "mount a carousel; prints the mount point (null on failure)");
    mount->add_option("name", name)->required();
    mount->callback([&c] {
        c.emitOrNothing(c.control().mountCarousel(name),
               [](const std::optional<std::string>& p) { return Json{{"name", name}, {"mountPoint", optional(p)}}; });
    });
    auto* unmount = carousel->add_subcommand("unmount", "unmount a carousel");
    unmount->add_option("name", name)->required();
    unmount->callback([&c] { c.emit(c.control().unmountCarousel(name)); });
    static bool listen = true;
    auto* l = carousel->add_subcommand("listen", "ask for download-complete events, or stop them");
    addSwitch(*l, listen);
    l->callback([&c] { c.emit(listen ? c.control().addCarouselListener() : c.control().removeCarouselListener()); });
}

void addMedia(CLI::App& app, Context& c) {
    auto* media = app.add_subcommand("media", "media players (H is a player handle)")->require_subcommand(1);
    static int handle = 0;
    auto withHandle = [&](const char* name, const char* help) {
        auto* command = media->add_subcommand(name, help);
        command->add_option("H", handle, "player handle")->required();
        return command;
    };
    static std::string locator;
    auto* open = media->add_subcommand("open", "open a player; prints its handle (null on failure)");
    open->add_option("locator", locator)->required();
    open->callback([&c] { c.emitOrNothing(c.control().openMedia(locator), [](const auto& h) { return Json{{"handle", optional(h)}}; }); });
    withHandle("duration", "the item's duration")->callback([&c] {
        c.emit(c.control().mediaDuration(handle), optional<std::int32_t>);
    });
    withHandle("time", "the current time")->callback([&c] {
        c.emit(c.control().mediaCurrentTime(handle), optional<std::int32_t>);
    });
    static int first = 0, second = 0;
    auto* seek = withHandle("seek", "set the current time (two integers, the player's meaning)");
    seek->add_option("first", first)->required();
    seek->add_option("second", second)->required();
    seek->callback([&c] { c.emit(c.control().setMediaCurrentTime(handle, first, second), optional<std::int32_t>); });
    withHandle("listen", "ask for the end-of-media event")->callback([&c] { c.emit(c.control().addMediaListener(handle)); });
    static bool wait = false;
    auto* play = withHandle("play", "start playing; prints true or false");
    play->add_flag("--wait", wait, "then wait until the end of the media (prints the end-of-media event)");
    play->callback([&c] {
        auto& client = c.control();
        auto ended = std::make_shared<std::promise<void>>();
        if (wait) {
            client.onEndOfMedia([ended](const EndOfMedia& e) {
                if (e.handle == handle) ended->set_value();
            });
            if (auto listening = client.addMediaListener(handle); !listening) return c.fail(listening.error());
        }
        auto played = client.playMedia(handle);
        c.emit(played, [](bool b) { return Json(b); });
        if (!wait || !played || !*played) return;
        ended->get_future().wait();
        print(c.json ? Json{{"event", "end-of-media"}, {"handle", handle}} : Json("end of media"), c.json, c.jsonIndent);
    });
    withHandle("stop", "stop playing")->callback([&c] { c.emit(c.control().stopMedia(handle)); });
    withHandle("close", "close the player")->callback([&c] { c.emit(c.control().closeMedia(handle)); });
    static Rectangle bounds{};
    auto* b = withHandle("bounds", "show the player's bounds, or set them when four values are given");
    addRectangle(b, bounds, false);
    b->callback([&c, b] {
        if (!wholeRectangle(b)) return c.usage("bounds take H x y width height, or H alone to read them");
        if (b->count("height") == 0) return c.emit(c.control().mediaBounds(handle), rectangleJson);
        c.emit(c.control().setMediaBounds(handle, bounds), optional<std::int32_t>);
    });
    static bool state = false;
    auto* freeze = withHandle("freeze", "freeze or resume");
    addSwitch(*freeze, state);
    freeze->callback([&c] { c.emit(c.control().setMediaFreeze(handle, state)); });
    auto* mute = withHandle("mute", "mute or unmute");
    addSwitch(*mute, state);
    mute->callback([&c] { c.emit(c.control().setMediaMute(handle, state)); });
    static std::string which;
    static double level = 0;
    auto* l = withHandle("level", "set a level: sound, balance, bass or treble");
    l->add_option("which", which)->required()->check(CLI::IsMember({"sound", "balance", "bass", "treble"}));
    l->add_option("level", level)->required();
    l->callback([&c] {
        auto& client = c.control();
        c.emit(which == "sound"     ? client.setMediaSoundLevel(handle, level)
               : which == "balance" ? client.setMediaBalanceLevel(handle, level)
               : which == "bass"    ? client.setMediaBassLevel(handle, level)
                                    : client.setMediaTrebleLevel(handle, level));
    });
}

void addServiceInformation(CLI::App& app, Context& c) {
    auto* si = app.add_subcommand("si", "service information")->require_subcommand(1);
    auto text = [](const std::string& s) { return Json(s); };
    si->add_subcommand("coding", "the SI coding format")->callback([&c, text] { c.emit(c.control().siCodingFormat(), text); });
    si->add_subcommand("description", "the service description")->callback([&c, text] {
        c.emit(c.control().serviceDescription(), text);
    });
    si->add_subcommand("events", "the program events with their byte and string lists")->callback([&c] {
        c.emit(c.control().programEvents(), [&c](const auto& l) {
            return rows(l, [&c](const ProgramEvent& e) { return c.fields(FieldNames::Record::ProgramEvent, programEvent(e)); });
        });
    });
    si->add_subcommand("event", "the current program event (null when none)")->callback([&c] {
        c.emit(c.control().programEvent(), [&c](const auto& e) {
            return e ? c.fields(FieldNames::Record::ProgramEvent, programEvent(*e)) : Json(nullptr);
        });
    });
    si->add_subcommand("services", "the services")->callback([&c] {
        c.emit(c.control().services(), [&c](const auto& l) {
            return rows(l, [&c](const Service& s) {
                return c.fields(FieldNames::Record::Service, Json{{"value0", s.value0}, {"value1", s.value1}, {"value2", s.value2},
                            {"value3", s.value3}, {"value4", s.value4}, {"text0", s.text0}});
            });
        });
    });
    si->add_subcommand("current", "the current service (null when none)")->callback([&c] {
        c.emit(c.control().currentService(), optional<std::int32_t>);
    });
    si->add_subcommand("ca", "the CA system ids")->callback([&c] {
        c.emit(c.control().caSystemIds(), [](const auto& l) { return Json(l); });
    });
    si->add_subcommand("protected", "whether the service is protected")->callback([&c] {
        c.emit(c.control().isProtectedService(), [](bool b) { return Json(b); });
    });
    static int id = 0, second = 0;
    auto* components = si->add_subcommand("components", "the components of a service");
    components->add_option("ID", id)->required();
    components->callback([&c] {
        c.emit(c.control().serviceComponents(id), [&c](const auto& l) {
            return rows(l, [&c](const ServiceComponent& s) {
                return c.fields(FieldNames::Record::Component, Json{{"value0", s.value0}, {"value1", s.value1}, {"value2", s.value2},
                            {"value3", s.value3}, {"value4", s.value4}, {"value5", s.value5}});
            });
        });
    });
    auto* pmts = si->add_subcommand("pmts", "the PMTs of a service");
    pmts->add_option("ID", id)->required();
    pmts->callback([&c] {
        c.emit(c.control().pmts(id), [&c](const auto& l) {
            return rows(l, [&c](const Pmt& p) {
                return c.fields(FieldNames::Record::Pmt,
                                Json{{"value0", p.value0}, {"value1", p.value1}, {"value2", p.value2}, {"value3", p.value3}});
            });
        });
    });
    si->add_subcommand("ts", "the transport stream (null when none)")->callback([&c] {
        c.emit(c.control().transportStream(), [&c](const std::optional<TransportStream>& t) {
            if (!t) return Json(nullptr);
            return c.fields(FieldNames::Record::TransportStream, Json{{"value0", t->value0}, {"value1", t->value1}, {"value2", t->value2},
                        {"value3", t->value3}, {"value4", t->value4}});
        });
    });
    si->add_subcommand("network", "the network (null when none)")->callback([&c] {
        c.emit(c.control().network(), [&c](const std::optional<Network>& n) {
            return n ? c.fields(FieldNames::Record::Network, Json{{"value0", n->value0}, {"text0", n->text0}}) : Json(nullptr);
        });
    });
    auto* d = si->add_subcommand("descriptors", "raw descriptors, shown as hex dumps")->require_subcommand(1);
    auto* event = d->add_subcommand("event", "of a program event");
    event->add_option("first", id)->required();
    event->add_option("second", second)->required();
    event->callback([&c] { c.emit(c.control().programEventDescriptors(id, second), descriptors); });
    auto* component = d->add_subcommand("component", "of a service component");
    component->add_option("ID", id)->required();
    component->callback([&c] { c.emit(c.control().serviceComponentDescriptors(id), descriptors); });
    // The bridge keeps a service's own descriptors for in-process callers:
    // no control request reaches them. Say so rather than ask something else.
    auto* service = d->add_subcommand("service", "not offered over the control socket; see component");
    service->add_option("ID", id)->required();
    service->callback([&c] {
        c.usage("the bridge has no request for a service's descriptors; try 'si descriptors component ID'");
    });
    auto* ts = d->add_subcommand("ts", "of a transport stream");
    ts->add_option("ID", id)->required();
    ts->callback([&c] { c.emit(c.control().transportStreamDescriptors(id), descriptors); });
    d->add_subcommand("network", "of the network")->callback([&c] { c.emit(c.control().networkDescriptors(), descriptors); });
}

void addRaw(CLI::App& app, Context& c) {
    static int type = 0, code = 0;
    static std::string hex;
    const std::string payload = std::to_string(tessarine::PAYLOAD_OFFSET);
    auto* raw = app.add_subcommand(
        "raw", "send any record (bytes from " + payload + " on given in hex) and dump what comes back");
    // "MSG_SI" or "si" as well as the number.
    std::map<std::string, int> types;
    for (int t = 0; t <= int{std::numeric_limits<std::uint8_t>::max()}; ++t) {
        const std::string name = wire::WireNames::typeName(t);
        if (name == std::to_string(t)) continue;
        types.emplace(name, t);
        types.emplace(wire::WireNames::family(t), t);
    }
    raw->add_option("--type", type, "record type, a number or a name")->required()->transform(CLI::CheckedTransformer(types, CLI::ignore_case).description(""));
    raw->add_option("--code", code, "record code")->required();
    raw->add_option("--hex", hex, "payload bytes from byte " + payload + ", e.g. \"07 00 00 00\"");
    raw->callback([&c] {
        std::vector<std::uint8_t> payload;
        if (!parseHex(hex, payload)) return c.usage("--hex takes pairs of hex digits");
        c.emitOrNothing(c.control().raw(type, code, payload), [](const std::vector<RawFrame>& frames) {
            Json out = Json::array();
            for (const auto& f : frames) {
                Json frame{{"kind", f.isRecord ? "record" : "trailing"}};
                if (f.isRecord) {
                    std::int32_t t, k;
                    std::memcpy(&t, f.bytes.data() + tessarine::TYPE_OFFSET, sizeof t);
                    std::memcpy(&k, f.bytes.data() + tessarine::CODE_OFFSET, sizeof k);
                    frame["type"] = t;
                    frame["code"] = k;
                }
                frame["bytes"] = toHex(f.bytes);
                out.push_back(frame);
            }
            return out;
        });
    });
}

}  // namespace

void addControlCommands(CLI::App& app, Context& c) {
    static int flag = 0;
    auto* version = app.add_subcommand("version", "ask the bridge about a version flag (the bridge's version-flag query; --version prints this tool's version)");
    version->add_option("flag", flag)->required();
    version->callback([&c] {
        c.emit(c.control().checkVersion(flag), [](std::uint8_t v) { return Json{{"flag", flag}, {"result", v}}; });
    });
    addVideo(app, c);
    addProperty(app, c);
    addAudio(app, c);
    addTunerAndCarousel(app, c);
    addMedia(app, c);
    addServiceInformation(app, c);
    addRaw(app, c);
}

}  // namespace cli
