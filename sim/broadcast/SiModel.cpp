#include "sim/broadcast/SiModel.h"

#include <bitstream/dvb/si/strings.h>
#include <iconv.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <set>

namespace tessarine::broadcast {

namespace mf = middlewarefacade;

namespace {

constexpr uint8_t TAG_CA = 0x09;
constexpr uint8_t TAG_ISO639 = 0x0A;
constexpr uint8_t TAG_NETWORK_NAME = 0x40;
constexpr uint8_t TAG_SATELLITE = 0x43;
constexpr uint8_t TAG_CABLE = 0x44;
constexpr uint8_t TAG_SERVICE = 0x48;
constexpr uint8_t TAG_SHORT_EVENT = 0x4D;
constexpr uint8_t TAG_EXTENDED_EVENT = 0x4E;
constexpr uint8_t TAG_STREAM_ID = 0x52;
constexpr uint8_t TAG_CONTENT = 0x54;
constexpr uint8_t TAG_PARENTAL = 0x55;
constexpr uint8_t TAG_TELETEXT = 0x56;
constexpr uint8_t TAG_SUBTITLING = 0x59;
constexpr uint8_t TAG_TERRESTRIAL = 0x5A;
constexpr uint8_t TAG_AC3 = 0x6A;
constexpr uint8_t TAG_EAC3 = 0x7A;
constexpr uint8_t TAG_DTS = 0x7B;
constexpr uint8_t TAG_AAC = 0x7C;

const Descriptor* find(const DescriptorLoop& loop, uint8_t tag) {
    for (const Descriptor& d : loop)
        if (d.tag == tag) return &d;
    return nullptr;
}

std::list<mf::Descriptors_> toFacade(const DescriptorLoop& loop) {
    std::list<mf::Descriptors_> result;
    for (const Descriptor& d : loop) result.push_back({d.tag, {d.body.begin(), d.body.end()}});
    return result;
}

// A length-prefixed text inside a descriptor body; advances `at`. Returns
// false when the length runs past the body.
bool readText(const Bytes& body, size_t& at, std::string& out) {
    if (at >= body.size()) return false;
    size_t length = body[at++];
    if (at + length > body.size()) return false;
    out = decodeDvbText(body.data() + at, length);
    at += length;
    return true;
}

struct ServiceInfo {
    int type = 0;
    std::string provider, name;
};

ServiceInfo serviceInfo(const DescriptorLoop& loop) {
    ServiceInfo info;
    if (const Descriptor* d = find(loop, TAG_SERVICE); d && !d->body.empty()) {
        info.type = d->body[0];
        size_t at = 1;
        if (readText(d->body, at, info.provider)) readText(d->body, at, info.name);
    }
    return info;
}

// Video 1, audio 2, subtitles or teletext 3, anything else 0.
int streamKind(const PmtStream& s) {
    switch (s.type) {
    case 0x01: case 0x02: case 0x10: case 0x1B: case 0x24: case 0x42: case 0xEA: return 1;
    case 0x03: case 0x04: case 0x0F: case 0x11: case 0x81: case 0x87: return 2;
    case 0x06:
        for (const Descriptor& d : s.descriptors) {
            if (d.tag == TAG_TELETEXT || d.tag == TAG_SUBTITLING) return 3;
            if (d.tag == TAG_AC3 || d.tag == TAG_EAC3 || d.tag == TAG_DTS || d.tag == TAG_AAC) return 2;
        }
        return 0;
    default: return 0;
    }
}

void addCaSystems(const DescriptorLoop& loop, std::vector<int>& ids) {
    for (const Descriptor& d : loop)
        if (d.tag == TAG_CA && d.body.size() >= 2) {
            int id = (d.body[0] << 8) | d.body[1];
            if (std::find(ids.begin(), ids.end(), id) == ids.end()) ids.push_back(id);
        }
}

}  // namespace

std::string decodeDvbText(const uint8_t* text, size_t length) {
    const uint8_t* p = text;
    size_t left = length;
    const char* encoding = dvb_string_get_encoding(&p, &left, "ISO6937");
    if (!encoding || !*encoding) return {};
    std::string raw(reinterpret_cast<const char*>(p), left);
    // DVB control codes: emphasis on/off are dropped, CR/LF becomes a newline.
    std::string clean;
    for (unsigned char c : raw) {
        if (c == 0x8A) clean += '\n';
        else if (c < 0x80 || c > 0x9F) clean += static_cast<char>(c);
    }
    if (!std::strcmp(encoding, "UTF-8")) return clean;
    iconv_t cd = iconv_open("UTF-8", encoding);
    if (cd == reinterpret_cast<iconv_t>(-1)) return clean;
    std::string out(clean.size() * 4 + 4, '\0');
    char* in = clean.data();
    size_t inLeft = clean.size();
    char* o = out.data();
    size_t outLeft = out.size();
    while (inLeft > 0) {
        if (iconv(cd, &in, &inLeft, &o, &outLeft) != static_cast<size_t>(-1)) break;
        if (errno != EILSEQ && errno != EINVAL) break;
        ++in, --inLeft;  // an unmappable byte is left out
    }
    iconv_close(cd);
    out.resize(out.size() - outLeft);
    return out;
}

void SiModel::setPat(uint16_t tsid, uint8_t version, const std::vector<std::pair<uint16_t, uint16_t>>& programs) {
    std::lock_guard<std::mutex> lock(mutex_);
    tsid_ = tsid;
    patVersion_ = version;
    programs_.clear();
    for (auto program : programs)
        if (program.first != 0) programs_.push_back(program);  // program 0 names the NIT PID
    for (auto it = pmts_.begin(); it != pmts_.end();)
        it = std::any_of(programs_.begin(), programs_.end(), [&](auto p) { return p.first == it->first; })
                 ? std::next(it)
                 : pmts_.erase(it);
    ++updates_;
    ++changes_;
}

void SiModel::setPmt(PmtTable pmt) {
    std::lock_guard<std::mutex> lock(mutex_);
    pmts_[pmt.program] = std::move(pmt);
    ++updates_;
    ++changes_;
}

void SiModel::setSdt(SdtTable sdt) {
    std::lock_guard<std::mutex> lock(mutex_);
    sdt_ = std::move(sdt);
    ++updates_;
    ++changes_;
}

void SiModel::setNit(NitTable nit) {
    std::lock_guard<std::mutex> lock(mutex_);
    nit_ = std::move(nit);
    ++updates_;
    ++changes_;
}

void SiModel::setEit(EitTable eit) {
    std::lock_guard<std::mutex> lock(mutex_);
    eits_[{eit.service, eit.tableId}] = std::move(eit);
    ++updates_;
    ++changes_;
}

void SiModel::markScrambled(uint16_t pid) {
    std::lock_guard<std::mutex> lock(mutex_);
    if (pid < scrambled_.size() && !scrambled_[pid]) {
        scrambled_[pid] = true;
        ++changes_;
    }
}

void SiModel::setCurrentService(int serviceId) {
    std::lock_guard<std::mutex> lock(mutex_);
    current_ = serviceId;
    ++changes_;
}

std::vector<std::pair<uint16_t, uint16_t>> SiModel::programs() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return programs_;
}

uint64_t SiModel::updates() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return updates_;
}

uint64_t SiModel::changes() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return changes_;
}

int SiModel::currentLocked() const {
    if (current_ != -1) return current_;
    if (!programs_.empty()) return programs_.front().first;
    if (sdt_ && !sdt_->services.empty()) return sdt_->services.front().id;
    return -1;
}

// 0 and -1 stand for the current service.
int SiModel::resolveService(int serviceId) const {
    return serviceId == 0 || serviceId == -1 ? currentLocked() : serviceId;
}

const SdtService* SiModel::sdtServiceLocked(int serviceId) const {
    if (!sdt_) return nullptr;
    for (const SdtService& s : sdt_->services)
        if (s.id == serviceId) return &s;
    return nullptr;
}

std::optional<mf::Network_> SiModel::getNetwork() const {
    std::lock_guard<std::mutex> lock(mutex_);
    if (!nit_) return std::nullopt;
    mf::Network_ network{};
    network.value0 = nit_->networkId;
    if (const Descriptor* d = find(nit_->descriptors, TAG_NETWORK_NAME))
        network.text0 = decodeDvbText(d->body.data(), d->body.size());
    return network;
}

std::list<mf::Descriptors_> SiModel::getNetworkDescriptors() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return nit_ ? toFacade(nit_->descriptors) : std::list<mf::Descriptors_>{};
}

std::optional<mf::TransportStream_> SiModel::getTransportStream() const {
    std::lock_guard<std::mutex> lock(mutex_);
    if (!tsid_ && !sdt_) return std::nullopt;
    mf::TransportStream_ ts{};
    ts.value0 = tsid_ ? *tsid_ : sdt_->tsid;
    ts.value1 = sdt_ ? sdt_->onid : 0;
    ts.value2 = nit_ ? nit_->networkId : 0;
    ts.value3 = static_cast<int>(programs_.size());
    if (nit_) {
        if (const Descriptor* d = find(nit_->descriptors, TAG_NETWORK_NAME))
            ts.text0 = decodeDvbText(d->body.data(), d->body.size());
        for (const NitStream& s : nit_->streams) {
            if (s.tsid != ts.value0) continue;
            if (!sdt_) ts.value1 = s.onid;
            if (find(s.descriptors, TAG_CABLE)) ts.value4 = 1;
            else if (find(s.descriptors, TAG_SATELLITE)) ts.value4 = 2;
            else if (find(s.descriptors, TAG_TERRESTRIAL)) ts.value4 = 3;
        }
    }
    return ts;
}

std::list<mf::Descriptors_> SiModel::getTransportStreamDescriptors(int tsid) const {
    std::lock_guard<std::mutex> lock(mutex_);
    if (!nit_) return {};
    if ((tsid == 0 || tsid == -1) && tsid_) tsid = *tsid_;
    for (const NitStream& s : nit_->streams)
        if (s.tsid == tsid) return toFacade(s.descriptors);
    return {};
}

std::list<mf::Service_> SiModel::getServices() const {
    std::lock_guard<std::mutex> lock(mutex_);
    std::vector<int> ids;
    for (auto program : programs_) ids.push_back(program.first);
    if (sdt_)
        for (const SdtService& s : sdt_->services)
            if (std::find(ids.begin(), ids.end(), s.id) == ids.end()) ids.push_back(s.id);
    std::list<mf::Service_> result;
    for (int id : ids) {
        mf::Service_ service{};
        service.value0 = id;
        service.value1 = sdt_ ? sdt_->onid : 0;
        service.value2 = tsid_ ? *tsid_ : (sdt_ ? sdt_->tsid : 0);
        if (const SdtService* s = sdtServiceLocked(id)) {
            ServiceInfo info = serviceInfo(s->descriptors);
            service.text0 = info.name;
            service.text1 = info.provider;
            service.value3 = info.type;
            service.value4 = s->running;
        }
        result.push_back(std::move(service));
    }
    return result;
}

int SiModel::getCurrentService() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return currentLocked();
}

std::list<mf::Descriptors_> SiModel::getServiceDescriptors(int serviceId) const {
    std::lock_guard<std::mutex> lock(mutex_);
    const SdtService* s = sdtServiceLocked(resolveService(serviceId));
    return s ? toFacade(s->descriptors) : std::list<mf::Descriptors_>{};
}

// A service's events: present/following first, then the schedule; an event
// known from both keeps its present/following form, which is more recent.
std::vector<const EitEvent*> SiModel::eventsLocked(uint16_t service) const {
    std::vector<const EitEvent*> events;
    std::set<uint16_t> seen;
    for (auto it = eits_.lower_bound({service, 0}); it != eits_.end() && it->first.first == service; ++it)
        for (const EitEvent& e : it->second.events)
            if (seen.insert(e.id).second) events.push_back(&e);
    std::stable_sort(events.begin(), events.end(), [](auto a, auto b) { return a->start < b->start; });
    return events;
}

mf::ProgramEvent_ SiModel::eventRecord(uint16_t service, const EitEvent& e) const {
    mf::ProgramEvent_ r{};
    r.value0 = e.id;
    r.value1 = static_cast<int>(e.start);
    r.value2 = e.duration;
    r.value3 = e.running;
    r.value4 = service;
    r.value5 = e.freeCa ? 1 : 0;
    for (const Descriptor& d : e.descriptors) {
        const Bytes& b = d.body;
        if (d.tag == TAG_SHORT_EVENT && b.size() >= 4 && r.text0.empty()) {
            r.bytes0.assign(b.begin(), b.begin() + 3);
            size_t at = 3;
            if (readText(b, at, r.text0)) readText(b, at, r.text1);
        } else if (d.tag == TAG_EXTENDED_EVENT && b.size() >= 5) {
            size_t itemsEnd = std::min(b.size(), size_t{5} + b[4]);
            size_t at = 5;
            std::string description, item;
            while (at < itemsEnd && readText(b, at, description) && readText(b, at, item)) {
                r.strings0.push_back(description);
                r.strings1.push_back(item);
            }
            at = itemsEnd;
            std::string text;
            if (readText(b, at, text)) r.text2 += text;
        } else if (d.tag == TAG_CONTENT) {
            for (size_t at = 0; at + 1 < b.size(); at += 2) r.bytes1.push_back(b[at]);
        } else if (d.tag == TAG_PARENTAL) {
            for (size_t at = 0; at + 3 < b.size(); at += 4) {
                if (r.bytes2.empty()) r.value6 = b[at + 3] >= 0x01 && b[at + 3] <= 0x0F ? b[at + 3] + 3 : 0;
                r.bytes2.insert(r.bytes2.end(), b.begin() + at, b.begin() + at + 4);
            }
        }
    }
    return r;
}

std::list<mf::ProgramEvent_> SiModel::getProgramEvents() const {
    std::lock_guard<std::mutex> lock(mutex_);
    std::vector<uint16_t> services;
    for (auto program : programs_) services.push_back(program.first);
    for (const auto& entry : eits_)
        if (std::find(services.begin(), services.end(), entry.first.first) == services.end())
            services.push_back(entry.first.first);
    std::list<mf::ProgramEvent_> result;
    for (uint16_t service : services)
        for (const EitEvent* e : eventsLocked(service)) result.push_back(eventRecord(service, *e));
    return result;
}

std::optional<mf::ProgramEvent_> SiModel::getProgramEvent() const {
    std::lock_guard<std::mutex> lock(mutex_);
    int service = currentLocked();
    auto it = eits_.find({static_cast<uint16_t>(service), 0x4E});
    if (service < 0 || it == eits_.end() || !it->second.hasPresent) return std::nullopt;
    return eventRecord(static_cast<uint16_t>(service), it->second.events.front());
}

std::list<mf::Descriptors_> SiModel::getProgramEventDescriptors(int serviceId, int eventId) const {
    std::lock_guard<std::mutex> lock(mutex_);
    int service = resolveService(serviceId);
    if (service < 0 || service > 0xFFFF) return {};
    for (const EitEvent* e : eventsLocked(static_cast<uint16_t>(service)))
        if (e->id == eventId) return toFacade(e->descriptors);
    return {};
}

std::list<mf::ServiceComponent_> SiModel::getServiceComponents(int serviceId) const {
    std::lock_guard<std::mutex> lock(mutex_);
    int service = resolveService(serviceId);
    auto it = pmts_.find(static_cast<uint16_t>(service));
    if (service < 0 || it == pmts_.end()) return {};
    std::list<mf::ServiceComponent_> result;
    for (const PmtStream& s : it->second.streams) {
        mf::ServiceComponent_ c{};
        c.value0 = s.pid;
        c.value1 = s.type;
        const Descriptor* tag = find(s.descriptors, TAG_STREAM_ID);
        c.value2 = tag && !tag->body.empty() ? tag->body[0] : -1;
        c.value3 = service;
        c.value4 = streamKind(s);
        const Descriptor* language = find(s.descriptors, TAG_ISO639);
        c.value5 = language && language->body.size() >= 3
                       ? (language->body[0] << 16) | (language->body[1] << 8) | language->body[2]
                       : 0;
        result.push_back(c);
    }
    return result;
}

std::list<mf::Descriptors_> SiModel::getServiceComponentDescriptors(int pid) const {
    std::lock_guard<std::mutex> lock(mutex_);
    for (const auto& entry : pmts_)
        for (const PmtStream& s : entry.second.streams)
            if (s.pid == pid) return toFacade(s.descriptors);
    return {};
}

std::list<mf::PMT_> SiModel::getPMTs(int program) const {
    std::lock_guard<std::mutex> lock(mutex_);
    std::list<mf::PMT_> result;
    for (auto [number, pid] : programs_) {
        if (program != 0 && program != -1 && program != number) continue;
        auto it = pmts_.find(number);
        if (it == pmts_.end()) continue;
        result.push_back({number, pid, it->second.pcrPid, it->second.version});
    }
    return result;
}

std::string SiModel::getSICodingFormat() const {
    std::lock_guard<std::mutex> lock(mutex_);
    if (sdt_ || nit_ || !eits_.empty()) return "DVB";
    return tsid_ ? "MPEG" : "";
}

std::list<int> SiModel::getCASystemIds() const {
    std::lock_guard<std::mutex> lock(mutex_);
    auto it = pmts_.find(static_cast<uint16_t>(currentLocked()));
    if (it == pmts_.end()) return {};
    std::vector<int> ids;
    addCaSystems(it->second.descriptors, ids);
    for (const PmtStream& s : it->second.streams) addCaSystems(s.descriptors, ids);
    return {ids.begin(), ids.end()};
}

std::optional<bool> SiModel::isProtectedService() const {
    std::lock_guard<std::mutex> lock(mutex_);
    auto it = pmts_.find(static_cast<uint16_t>(currentLocked()));
    if (it == pmts_.end()) return std::nullopt;
    if (find(it->second.descriptors, TAG_CA)) return true;
    for (const PmtStream& s : it->second.streams)
        if (find(s.descriptors, TAG_CA) || scrambled_[s.pid]) return true;
    return false;
}

std::string SiModel::getServiceDescription() const {
    std::lock_guard<std::mutex> lock(mutex_);
    const SdtService* s = sdtServiceLocked(currentLocked());
    return s ? serviceInfo(s->descriptors).provider : std::string{};
}

}  // namespace tessarine::broadcast
