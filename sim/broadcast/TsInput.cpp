#include "sim/broadcast/TsInput.h"

#include <bitstream/dvb/si/datetime.h>
#include <bitstream/mpeg/psi.h>
#include <bitstream/mpeg/ts.h>

extern "C" {
#include <dvbpsi/dvbpsi.h>
#include <dvbpsi/descriptor.h>
#include <dvbpsi/psi.h>
#include <dvbpsi/demux.h>
#include <dvbpsi/pat.h>
#include <dvbpsi/pmt.h>
#include <dvbpsi/sdt.h>
#include <dvbpsi/nit.h>
#include <dvbpsi/eit.h>
}

#include <algorithm>
#include <bitset>
#include <cstring>

#include "tessarine/protocol/Limits.h"

namespace tessarine::broadcast {

namespace {

constexpr uint16_t kPatPid = 0x00;
constexpr uint16_t kNitPid = 0x10;
constexpr uint16_t kSdtPid = 0x11;
constexpr uint16_t kEitPid = 0x12;
constexpr uint16_t kNullPid = 0x1FFF;
constexpr int kMaxSection = static_cast<int>(tessarine::MAX_SECTION_LENGTH);

DescriptorLoop loopOf(const dvbpsi_descriptor_t* d) {
    DescriptorLoop loop;
    for (; d; d = d->p_next) loop.push_back({d->i_tag, Bytes(d->p_data, d->p_data + d->i_length)});
    return loop;
}

int64_t startTime(uint64_t utc) {
    if ((utc & 0xFFFFFFFFFFull) == 0xFFFFFFFFFFull) return -1;  // undefined
    return dvb_time_decode_UTC(utc);
}

int32_t durationSeconds(uint32_t bcd) {
    int seconds = 0, hour = 0, minute = 0, second = 0;
    dvb_time_decode_bcd(bcd, &seconds, &hour, &minute, &second);
    return seconds;
}

TsInput* inputOf(dvbpsi_t* handle) { return static_cast<TsInput*>(handle->p_sys); }

// libdvbpsi reports refused sections (bad CRC, continuity breaks, malformed
// headers) as errors and warnings; each one counts.
void onMessage(dvbpsi_t* handle, const dvbpsi_msg_level_t level, const char* message) {
    if (level <= DVBPSI_MSG_WARN && handle && handle->p_sys)
        inputOf(handle)->warn(&InputCounters::tableErrors, message ? message : "table decoder");
}

dvbpsi_t* newHandle(TsInput* input) {
    dvbpsi_t* handle = dvbpsi_new(&onMessage, DVBPSI_MSG_WARN);
    if (handle) handle->p_sys = input;
    return handle;
}

// A section assembler without table semantics: every complete section of
// the PID goes to the sinks, as libdvbpsi reassembled it.
struct RawDecoder {
    DVBPSI_DECODER_COMMON
    uint16_t pid;
};

void onRawSection(dvbpsi_t* handle, dvbpsi_psi_section_t* section) {
    auto* decoder = reinterpret_cast<RawDecoder*>(handle->p_decoder);
    for (dvbpsi_psi_section_t* s = section; s; s = s->p_next) {
        const size_t length = static_cast<size_t>(psi_get_length(s->p_data)) + PSI_HEADER_SIZE;
        if (s->b_syntax_indicator && (!psi_validate(s->p_data) || !psi_check_crc(s->p_data))) {
            inputOf(handle)->warn(&InputCounters::tableErrors, "section with a bad CRC dropped");
            continue;
        }
        inputOf(handle)->deliverSection(decoder->pid, s->p_data, length);
    }
    dvbpsi_DeletePSISections(section);
}

}  // namespace

struct TsInput::RawPid {
    dvbpsi_t* handle = nullptr;
    std::vector<SectionSink*> sinks;

    RawPid(TsInput* input, uint16_t pid) : handle(newHandle(input)) {
        if (!handle) return;
        auto* decoder = static_cast<RawDecoder*>(
            dvbpsi_decoder_new(&onRawSection, kMaxSection, true, sizeof(RawDecoder)));
        if (decoder) decoder->pid = pid;
        handle->p_decoder = reinterpret_cast<dvbpsi_decoder_t*>(decoder);
    }
    ~RawPid() {
        if (!handle) return;
        if (handle->p_decoder) dvbpsi_decoder_delete(handle->p_decoder);
        handle->p_decoder = nullptr;
        dvbpsi_delete(handle);
    }
    RawPid(const RawPid&) = delete;
    RawPid& operator=(const RawPid&) = delete;
};

// The table decoders: PAT, the PMTs it names, and the NIT, SDT and EIT
// sub-table demultiplexers. Decoded tables go to the SI model whole.
struct TsInput::Decoders {
    struct Pmt {
        Decoders* owner;
        uint16_t pid, program;
        dvbpsi_t* handle;
    };

    TsInput& input;
    SiModel& model;
    dvbpsi_t* pat = nullptr;
    dvbpsi_t* nit = nullptr;
    dvbpsi_t* sdt = nullptr;
    dvbpsi_t* eit = nullptr;
    std::vector<std::unique_ptr<Pmt>> pmts;
    std::bitset<PID_COUNT> tablePids;  // the PIDs above and the PMTs'
    RepeatGate gate;
    size_t subtables = 0;

    Decoders(TsInput& in, SiModel& m) : input(in), model(m) {
        markTablePids();
        pat = newHandle(&input);
        if (pat && !dvbpsi_pat_attach(pat, &onPat, this)) dvbpsi_delete(pat), pat = nullptr;
        nit = demuxHandle();
        sdt = demuxHandle();
        eit = demuxHandle();
    }

    ~Decoders() {
        for (auto& pmt : pmts) dropPmt(*pmt);
        if (pat) dvbpsi_pat_detach(pat), dvbpsi_delete(pat);
        for (dvbpsi_t* h : {nit, sdt, eit})
            if (h) dvbpsi_DetachDemux(h), dvbpsi_delete(h);
    }

    dvbpsi_t* demuxHandle() {
        dvbpsi_t* h = newHandle(&input);
        if (h && !dvbpsi_AttachDemux(h, &onNewSubtable, this)) dvbpsi_delete(h), h = nullptr;
        return h;
    }

    static void dropPmt(Pmt& pmt) {
        dvbpsi_pmt_detach(pmt.handle);
        dvbpsi_delete(pmt.handle);
    }

    // Whether any decoder takes this PID: most packets (audio, video,
    // stuffing) go to none and are neither copied nor pushed.
    bool wants(uint16_t pid) const { return tablePids.test(pid); }

    dvbpsi_t* tableHandle(uint16_t pid) const {
        return pid == kPatPid ? pat : pid == kNitPid ? nit : pid == kSdtPid ? sdt : pid == kEitPid ? eit : nullptr;
    }

    static bool holdsPart(const dvbpsi_t* h) { return h && h->p_decoder && h->p_decoder->p_current_section; }

    // Whether no decoder of the PID is in the middle of a section.
    bool idle(uint16_t pid) const {
        if (holdsPart(tableHandle(pid))) return false;
        return std::none_of(pmts.begin(), pmts.end(), [&](auto& p) { return p->pid == pid && holdsPart(p->handle); });
    }

    void push(uint16_t pid, const uint8_t* packet) {
        uint8_t admitted[TS_SIZE];  // libdvbpsi takes a mutable packet
        if (!gate.admit(pid, packet, idle(pid), admitted)) return;
        if (dvbpsi_t* h = tableHandle(pid)) dvbpsi_packet_push(h, admitted);
        for (size_t i = 0; i < pmts.size(); ++i)  // a PMT callback never changes the list
            if (pmts[i]->pid == pid) dvbpsi_packet_push(pmts[i]->handle, admitted);
    }

    static void onPat(void* data, dvbpsi_pat_t* table) {
        auto* self = static_cast<Decoders*>(data);
        self->gate.decoded(kPatPid, 0x00, table->i_ts_id, table->i_version, table->b_current_next);
        if (table->b_current_next) {
            std::vector<std::pair<uint16_t, uint16_t>> programs;
            for (dvbpsi_pat_program_t* p = table->p_first_program; p; p = p->p_next)
                programs.emplace_back(p->i_number, p->i_pid);
            self->model.setPat(table->i_ts_id, table->i_version, programs);
            self->followPrograms(programs);
        }
        dvbpsi_pat_delete(table);
    }

    // One PMT decoder per program of the PAT; decoders of programs that left
    // the PAT, or moved to another PID, go.
    void followPrograms(const std::vector<std::pair<uint16_t, uint16_t>>& programs) {
        auto listed = [&](const Pmt& p) {
            return std::find(programs.begin(), programs.end(), std::make_pair(p.program, p.pid)) != programs.end();
        };
        for (auto it = pmts.begin(); it != pmts.end();)
            if (listed(**it)) ++it;
            else dropPmt(**it), it = pmts.erase(it);
        for (const auto& entry : programs) {
            const uint16_t program = entry.first, pid = entry.second;
            if (program == 0) continue;
            bool known = std::any_of(pmts.begin(), pmts.end(),
                                     [&](auto& p) { return p->program == program && p->pid == pid; });
            if (known) continue;
            if (pmts.size() >= MAX_PROGRAMS) {
                input.warn(&InputCounters::tablesRefused, "too many programs in the PAT");
                break;
            }
            auto pmt = std::make_unique<Pmt>(Pmt{this, pid, program, newHandle(&input)});
            if (!pmt->handle) continue;
            if (!dvbpsi_pmt_attach(pmt->handle, program, &onPmt, pmt.get())) {
                dvbpsi_delete(pmt->handle);
                continue;
            }
            gate.forget(pid);  // the new decoder needs the PMT sections already seen
            pmts.push_back(std::move(pmt));
        }
        markTablePids();
    }

    void markTablePids() {
        tablePids.reset();
        for (uint16_t pid : {kPatPid, kNitPid, kSdtPid, kEitPid}) tablePids.set(pid);
        for (const auto& pmt : pmts) tablePids.set(pmt->pid);
    }

    static void onPmt(void* data, dvbpsi_pmt_t* table) {
        auto* pmt = static_cast<Pmt*>(data);
        pmt->owner->gate.decoded(pmt->pid, 0x02, table->i_program_number, table->i_version, table->b_current_next);
        if (table->b_current_next) {
            PmtTable t;
            t.program = table->i_program_number;
            t.pid = pmt->pid;
            t.pcrPid = table->i_pcr_pid;
            t.version = table->i_version;
            t.descriptors = loopOf(table->p_first_descriptor);
            for (dvbpsi_pmt_es_t* es = table->p_first_es; es; es = es->p_next)
                t.streams.push_back({es->i_type, es->i_pid, loopOf(es->p_first_descriptor)});
            pmt->owner->model.setPmt(std::move(t));
        }
        dvbpsi_pmt_delete(table);
    }

    static void onNewSubtable(dvbpsi_t* handle, uint8_t tableId, uint16_t extension, void* data) {
        auto* self = static_cast<Decoders*>(data);
        const bool wanted = (handle == self->nit && tableId == 0x40) || (handle == self->sdt && tableId == 0x42) ||
                            (handle == self->eit && (tableId == 0x4E || (tableId >= 0x50 && tableId <= 0x5F)));
        const uint16_t pid = handle == self->nit ? kNitPid : handle == self->sdt ? kSdtPid : kEitPid;
        if (!wanted) {  // other networks and transport streams are not ours
            self->gate.ignored(pid, tableId, extension);
            return;
        }
        if (self->subtables >= MAX_SUBTABLES) {
            self->input.warn(&InputCounters::tablesRefused, "too many sub-tables");
            return;
        }
        bool attached = tableId == 0x40   ? dvbpsi_nit_attach(handle, tableId, extension, &onNit, self)
                        : tableId == 0x42 ? dvbpsi_sdt_attach(handle, tableId, extension, &onSdt, self)
                                          : dvbpsi_eit_attach(handle, tableId, extension, &onEit, self);
        if (attached) ++self->subtables;
    }

    static void onSdt(void* data, dvbpsi_sdt_t* table) {
        auto* self = static_cast<Decoders*>(data);
        self->gate.decoded(kSdtPid, 0x42, table->i_extension, table->i_version, table->b_current_next);
        if (table->b_current_next) {
            SdtTable t;
            t.tsid = table->i_extension;
            t.onid = table->i_network_id;
            t.version = table->i_version;
            for (dvbpsi_sdt_service_t* s = table->p_first_service; s; s = s->p_next)
                t.services.push_back({s->i_service_id, s->i_running_status, s->b_free_ca, loopOf(s->p_first_descriptor)});
            self->model.setSdt(std::move(t));
        }
        dvbpsi_sdt_delete(table);
    }

    static void onNit(void* data, dvbpsi_nit_t* table) {
        auto* self = static_cast<Decoders*>(data);
        self->gate.decoded(kNitPid, 0x40, table->i_extension, table->i_version, table->b_current_next);
        if (table->b_current_next) {
            NitTable t;
            t.networkId = table->i_extension;  // network_id travels as the table id extension
            t.version = table->i_version;
            t.descriptors = loopOf(table->p_first_descriptor);
            for (dvbpsi_nit_ts_t* ts = table->p_first_ts; ts; ts = ts->p_next)
                t.streams.push_back({ts->i_ts_id, ts->i_orig_network_id, loopOf(ts->p_first_descriptor)});
            self->model.setNit(std::move(t));
        }
        dvbpsi_nit_delete(table);
    }

    static void onEit(void* data, dvbpsi_eit_t* table) {
        auto* self = static_cast<Decoders*>(data);
        self->gate.decoded(kEitPid, table->i_table_id, table->i_extension, table->i_version, table->b_current_next);
        if (table->b_current_next) {
            EitTable t;
            t.service = table->i_extension;
            t.tableId = table->i_table_id;
            t.version = table->i_version;
            for (dvbpsi_eit_event_t* e = table->p_first_event; e; e = e->p_next)
                t.events.push_back({e->i_event_id, startTime(e->i_start_time), durationSeconds(e->i_duration),
                                    e->i_running_status, e->b_free_ca, loopOf(e->p_first_descriptor)});
            // The sections' numbers do not come through: a lone event that is
            // "not running" is taken as the following one, with no present.
            t.hasPresent = t.tableId == 0x4E && !t.events.empty() && (t.events.size() > 1 || t.events[0].running != 1);
            self->model.setEit(std::move(t));
        }
        dvbpsi_eit_delete(table);
    }
};

TsInput::TsInput(SiModel& model) : model_(model), decoders_(std::make_unique<Decoders>(*this, model)) {
    pending_.reserve(2 * TS_SIZE);
}

TsInput::~TsInput() {
    decoders_.reset();
    std::lock_guard<std::mutex> lock(routeMutex_);
    raw_.clear();
}

void TsInput::setPcrHandler(PcrHandler handler) { pcrHandler_ = std::move(handler); }

void TsInput::feed(const uint8_t* data, size_t length) {
    uint64_t packets = 0;
    size_t at = 0;
    while (at < length) {
        // In sync with nothing carried over: whole packets are taken where
        // they lie.
        if (synced_ && pending_.empty()) {
            while (length - at >= TS_SIZE && ts_validate(data + at)) {
                handlePacket(data + at, consumed_);
                consumed_ += TS_SIZE;
                at += TS_SIZE;
                ++packets;
            }
            if (at == length) break;
        }
        // Carry at most two packets' worth: enough to confirm a sync byte
        // at the next packet boundary.
        size_t take = std::min(length - at, 2 * TS_SIZE - pending_.size());
        pending_.insert(pending_.end(), data + at, data + at + take);
        at += take;
        size_t pos = 0;
        while (pending_.size() - pos >= TS_SIZE) {
            uint8_t* p = pending_.data() + pos;
            bool nextKnown = pending_.size() - pos >= 2 * TS_SIZE;
            if (ts_validate(p) && (synced_ || (nextKnown && ts_validate(p + TS_SIZE)))) {
                synced_ = true;
                skipping_ = false;
                handlePacket(p, consumed_ + pos);
                pos += TS_SIZE;
                ++packets;
                continue;
            }
            if (!synced_ && !nextKnown) break;  // wait for more bytes to confirm
            if (!skipping_) warn(&InputCounters::syncLosses, "packet sync lost; bytes skipped");
            synced_ = false;
            skipping_ = true;
            ++pos;
            std::lock_guard<std::mutex> lock(countersMutex_);
            ++counters_.bytesSkipped;
        }
        pending_.erase(pending_.begin(), pending_.begin() + static_cast<std::ptrdiff_t>(pos));
        consumed_ += pos;
    }
    // Counted once per chunk, not per packet: the lock is shared with readers.
    std::lock_guard<std::mutex> lock(countersMutex_);
    counters_.bytes += length;
    counters_.packets += packets;
}

void TsInput::handlePacket(const uint8_t* packet, uint64_t offset) {
    if (ts_get_transporterror(packet)) {
        warn(&InputCounters::transportErrors, "packet with the transport error indicator dropped");
        return;
    }
    // An adaptation field that leaves no room for the payload it announces
    // would send the section decoders reading past the packet's end.
    const unsigned room = TS_SIZE - TS_HEADER_SIZE - 1 - (ts_has_payload(packet) ? 1 : 0);
    if (ts_has_adaptation(packet) && ts_get_adaptation(packet) > room) {
        warn(&InputCounters::transportErrors, "packet with an adaptation field longer than the packet dropped");
        return;
    }
    const uint16_t pid = ts_get_pid(packet);
    if (pid == kNullPid) return;
    if (ts_has_adaptation(packet) && ts_get_adaptation(packet) >= 7 && tsaf_has_pcr(packet) && pcrHandler_)
        pcrHandler_(pid, tsaf_get_pcr(packet) * 300 + tsaf_get_pcrext(packet), offset);
    if (!ts_has_payload(packet)) return;
    if (ts_get_scrambling(packet)) model_.markScrambled(pid);
    if (decoders_->wants(pid)) decoders_->push(pid, packet);
    if (!routed_[pid].load(std::memory_order_relaxed)) return;
    uint8_t copy[TS_SIZE];  // libdvbpsi takes a mutable packet
    std::memcpy(copy, packet, TS_SIZE);
    std::lock_guard<std::mutex> lock(routeMutex_);
    auto it = raw_.find(pid);
    if (it != raw_.end() && it->second->handle && it->second->handle->p_decoder)
        dvbpsi_packet_push(it->second->handle, copy);
}

void TsInput::restart() {
    decoders_ = std::make_unique<Decoders>(*this, model_);
    consumed_ += pending_.size();
    pending_.clear();
    synced_ = skipping_ = false;
    std::lock_guard<std::mutex> lock(routeMutex_);
    for (auto& entry : raw_) {
        auto fresh = std::make_unique<RawPid>(this, entry.first);
        fresh->sinks = std::move(entry.second->sinks);
        entry.second = std::move(fresh);
    }
}

void TsInput::subscribe(uint16_t pid, SectionSink* sink) {
    std::lock_guard<std::mutex> lock(routeMutex_);
    auto& raw = raw_[pid];
    if (!raw) raw = std::make_unique<RawPid>(this, pid);
    raw->sinks.push_back(sink);
    routed_[pid].store(true, std::memory_order_relaxed);
}

void TsInput::unsubscribe(SectionSink* sink) {
    std::lock_guard<std::mutex> lock(routeMutex_);
    for (auto it = raw_.begin(); it != raw_.end();) {
        auto& sinks = it->second->sinks;
        sinks.erase(std::remove(sinks.begin(), sinks.end(), sink), sinks.end());
        if (sinks.empty()) routed_[it->first].store(false, std::memory_order_relaxed);
        it = sinks.empty() ? raw_.erase(it) : std::next(it);
    }
}

// Runs on the input thread inside dvbpsi_packet_push, with routeMutex_ held.
void TsInput::deliverSection(uint16_t pid, const uint8_t* section, size_t length) {
    auto it = raw_.find(pid);
    if (it == raw_.end()) return;
    uint64_t delivered = 0, dropped = 0;
    for (SectionSink* sink : it->second->sinks) (sink->offer(section, length) ? delivered : dropped)++;
    std::lock_guard<std::mutex> lock(countersMutex_);
    counters_.sectionsDelivered += delivered;
    counters_.sectionsDropped += dropped;
}

void TsInput::warn(uint64_t InputCounters::*counter, const std::string& what) {
    std::lock_guard<std::mutex> lock(countersMutex_);
    ++(counters_.*counter);
    lastWarning_ = what;
}

void TsInput::countLoop() {
    std::lock_guard<std::mutex> lock(countersMutex_);
    ++counters_.loops;
}

void TsInput::countReadError(const std::string& what) { warn(&InputCounters::readErrors, what); }

InputCounters TsInput::counters() const {
    std::lock_guard<std::mutex> lock(countersMutex_);
    InputCounters c = counters_;
    c.tableUpdates = model_.updates();
    return c;
}

std::string TsInput::lastWarning() const {
    std::lock_guard<std::mutex> lock(countersMutex_);
    return lastWarning_;
}

}  // namespace tessarine::broadcast
