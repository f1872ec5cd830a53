// ts-si-generator: puts a DVB network information table and event
// information tables (present/following and schedule) into a constant-rate
// transport stream, in place of its null packets, at broadcast repetition
// rates. Tables are built with libdvbpsi's table and descriptor writers and
// cut into packets with biTStream. A manifest lists what was written, so
// tests can compare what a reader decodes against it.
//
//   ts-si-generator --in BASE.ts --out OUT.ts --muxrate BPS --manifest FILE
//                   --service ID [--service ID] [--tsid N] [--onid N]
//                   [--network-id N] [--change-at SECONDS]
//
// With --change-at the present/following tables and the NIT move to version
// 1 from that point of the stream on: the following event becomes present.

#include <bitstream/dvb/si/datetime.h>
#include <bitstream/dvb/si/desc_4e.h>
#include <bitstream/mpeg/psi.h>
#include <bitstream/mpeg/ts.h>

extern "C" {
#include <dvbpsi/dvbpsi.h>
#include <dvbpsi/descriptor.h>
#include <dvbpsi/psi.h>
#include <dvbpsi/demux.h>
#include <dvbpsi/eit.h>
#include <dvbpsi/nit.h>
#include <dvbpsi/dr_40.h>
#include <dvbpsi/dr_4d.h>
#include <dvbpsi/dr_54.h>
#include <dvbpsi/dr_55.h>
}

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

namespace {

using Bytes = std::vector<uint8_t>;

constexpr uint16_t NIT_PID = 0x10;
constexpr uint16_t EIT_PID = 0x12;
constexpr uint16_t NULL_PID = 0x1FFF;

// Repetition intervals within DVB's limits for a stream's own tables
// (NIT at most 10 s, EIT present/following at most 2 s, schedule 10 s).
constexpr double NIT_INTERVAL = 2.0;
constexpr double EIT_PF_INTERVAL = 0.5;
constexpr double EIT_SCHEDULE_INTERVAL = 1.5;

// The programme of the evening, the same pattern for each service.
constexpr time_t FIRST_START = 1714586400;  // 2024-05-01 18:00:00 UTC

struct EventPlan {
    const char* name;
    const char* text;
    const char* extended;
    int offset;     // seconds after FIRST_START
    int duration;   // seconds
    uint8_t content;  // content nibbles
    uint8_t rating;   // DVB rating: minimum age - 3
};

const EventPlan PLANS[2][3] = {
    {{"Evening News", "The day's headlines.", "Reports from home and abroad, with sport.", 0, 3600, 0x21, 0x04},
     {"Weather Outlook", "Tomorrow's weather.", "A look at the week ahead, region by region.", 3600, 1800, 0x24, 0x00},
     {"Late Film: The Test Card", "A classic.", "Restored print of a film about a broadcast engineer.", 5400, 5400, 0x10, 0x0c}},
    {{"Wildlife Hour", "Life on the river bank.", "Otters, herons and kingfishers through the seasons.", 0, 3600, 0x91, 0x00},
     {"Quiz Night", "Four teams, one trophy.", "General knowledge quiz, final round.", 3600, 1800, 0x31, 0x00},
     {"Jazz at Midnight", "Live from the club.", "A trio plays standards until late.", 5400, 5400, 0x64, 0x00}},
};

struct Options {
    std::string in, out, manifest;
    long muxrate = 0;
    std::vector<uint16_t> services;
    uint16_t tsid = 0x0421;
    uint16_t onid = 0x2001;
    uint16_t networkId = 0x3001;
    double changeAt = -1;
};

uint16_t eventId(size_t service, size_t event) { return static_cast<uint16_t>(0x1000 + service * 0x100 + event); }

std::string networkName(int version) { return version ? "Tessarine Test Network (updated)" : "Tessarine Test Network"; }

void addDescriptor(dvbpsi_descriptor_t* generated, Bytes& loop) {
    loop.push_back(generated->i_tag);
    loop.push_back(generated->i_length);
    loop.insert(loop.end(), generated->p_data, generated->p_data + generated->i_length);
    dvbpsi_DeleteDescriptors(generated);
}

template <size_t N>
void setText(uint8_t (&field)[N], int& length, const char* text) {
    length = static_cast<int>(std::min(std::strlen(text), N));
    std::memcpy(field, text, static_cast<size_t>(length));
}

// The descriptor loop of one event: short event, extended event, content and
// parental rating.
Bytes eventDescriptors(const EventPlan& plan) {
    Bytes loop;
    dvbpsi_short_event_dr_t shortEvent{};
    std::memcpy(shortEvent.i_iso_639_code, "eng", 3);
    setText(shortEvent.i_event_name, shortEvent.i_event_name_length, plan.name);
    setText(shortEvent.i_text, shortEvent.i_text_length, plan.text);
    addDescriptor(dvbpsi_GenShortEventDr(&shortEvent, false), loop);

    // libdvbpsi 1.3's extended event writer leaves out the items' length,
    // so this one is written with biTStream.
    uint8_t extended[DESC_HEADER_SIZE + 255] = {};
    static uint8_t description[] = "Presenter";
    static uint8_t item[] = "A. Tester";
    const uint8_t language[3] = {'e', 'n', 'g'};
    desc4e_init(extended);
    desc4e_set_desc_number(extended, 0);
    desc4e_set_last_desc_number(extended, 0);
    desc4e_set_lang(extended, language);
    desc4e_set_items_length(extended, 2 + (sizeof(description) - 1) + (sizeof(item) - 1));
    uint8_t* entry = extended + DESC4E_HEADER_SIZE + 1;
    desc4en_set_item_description(entry, description, sizeof(description) - 1);
    desc4en_set_item_text(entry, item, sizeof(item) - 1);
    desc4e_set_text(extended, reinterpret_cast<uint8_t*>(const_cast<char*>(plan.extended)),
                    static_cast<uint8_t>(std::strlen(plan.extended)));
    desc4e_set_length(extended);
    loop.insert(loop.end(), extended, extended + DESC_HEADER_SIZE + desc_get_length(extended));

    dvbpsi_content_dr_t content{};
    content.i_contents_number = 1;
    content.p_content[0].i_type = plan.content;
    addDescriptor(dvbpsi_GenContentDr(&content, false), loop);

    dvbpsi_parental_rating_dr_t rating{};
    rating.i_ratings_number = 1;
    rating.p_parental_rating[0].i_country_code = ('G' << 16) | ('B' << 8) | 'R';
    rating.p_parental_rating[0].i_rating = plan.rating;
    addDescriptor(dvbpsi_GenParentalRatingDr(&rating, false), loop);
    return loop;
}

// Copies each generated section, whole with its CRC, and frees the list.
std::vector<Bytes> takeSections(dvbpsi_psi_section_t* sections) {
    std::vector<Bytes> result;
    for (dvbpsi_psi_section_t* s = sections; s; s = s->p_next)
        result.emplace_back(s->p_data, s->p_data + psi_get_length(s->p_data) + PSI_HEADER_SIZE);
    dvbpsi_DeletePSISections(sections);
    return result;
}

void addEvent(dvbpsi_eit_t* eit, uint16_t id, const EventPlan& plan, uint8_t running) {
    Bytes loop = eventDescriptors(plan);
    dvbpsi_eit_event_t* event =
        dvbpsi_eit_event_add(eit, id, dvb_time_encode_UTC(FIRST_START + plan.offset),
                             dvb_time_encode_duration(static_cast<unsigned>(plan.duration)), running, false,
                             static_cast<uint16_t>(loop.size()));
    for (size_t at = 0; at < loop.size(); at += 2u + loop[at + 1])
        dvbpsi_eit_event_descriptor_add(event, loop[at], loop[at + 1], &loop[at + 2]);
}

// One EIT section for one service; section numbering is set here because the
// present and following events each travel in a section of their own.
Bytes eitSection(dvbpsi_t* handle, const Options& o, size_t serviceIndex, uint8_t tableId, uint8_t version,
                 uint8_t number, uint8_t last, const std::vector<std::pair<size_t, uint8_t>>& events) {
    dvbpsi_eit_t* eit = dvbpsi_eit_new(tableId, o.services[serviceIndex], version, true, o.tsid, o.onid, last, 0x50);
    for (auto [index, running] : events)
        addEvent(eit, eventId(serviceIndex, index), PLANS[serviceIndex % 2][index], running);
    std::vector<Bytes> sections = takeSections(dvbpsi_eit_sections_generate(handle, eit, tableId));
    dvbpsi_eit_delete(eit);
    Bytes section = sections.at(0);
    psi_set_section(section.data(), number);
    psi_set_lastsection(section.data(), last);
    section.at(12) = last;  // segment_last_section_number
    psi_set_crc(section.data());
    return section;
}

std::vector<Bytes> nitSections(dvbpsi_t* handle, const Options& o, uint8_t version) {
    dvbpsi_nit_t* nit = dvbpsi_nit_new(0x40, o.networkId, o.networkId, version, true);
    dvbpsi_network_name_dr_t name{};
    std::string text = networkName(version);
    name.i_name_length = static_cast<uint8_t>(text.size());
    std::memcpy(name.i_name_byte, text.data(), text.size());
    Bytes loop;
    addDescriptor(dvbpsi_GenNetworkNameDr(&name, false), loop);
    dvbpsi_nit_descriptor_add(nit, loop[0], loop[1], &loop[2]);

    dvbpsi_nit_ts_t* ts = dvbpsi_nit_ts_add(nit, o.tsid, o.onid);
    Bytes services;  // service list: id and type (digital television)
    for (uint16_t id : o.services) services.insert(services.end(), {uint8_t(id >> 8), uint8_t(id), 0x01});
    dvbpsi_nit_ts_descriptor_add(ts, 0x41, static_cast<uint8_t>(services.size()), services.data());
    // Terrestrial delivery: 514 MHz in 10 Hz units, 8 MHz, 64-QAM, 2/3, 8k.
    uint8_t terrestrial[11] = {0x03, 0x10, 0xD8, 0x80, 0x1F, 0x43, 0x12, 0xFF, 0xFF, 0xFF, 0xFF};
    dvbpsi_nit_ts_descriptor_add(ts, 0x5A, sizeof(terrestrial), terrestrial);

    std::vector<Bytes> sections = takeSections(dvbpsi_nit_sections_generate(handle, nit, 0x40));
    dvbpsi_nit_delete(nit);
    return sections;
}

// One table's sections as TS packets: each section starts a packet of its own.
class Carousel {
public:
    Carousel(uint16_t pid, double interval, double first) : pid_(pid), interval_(interval), due_(first) {}

    void setSections(std::vector<Bytes> sections) { sections_ = std::move(sections); }

    // Queues a full repetition when it is due at stream time `now`.
    void tick(double now, std::vector<Bytes>& queue) {
        if (now < due_) return;
        due_ += interval_;
        for (const Bytes& section : sections_) {
            uint16_t sectionOffset = 0;
            const uint16_t total = static_cast<uint16_t>(section.size());
            while (sectionOffset < total) {
                Bytes packet(TS_SIZE);
                uint8_t tsOffset = 0;
                while (tsOffset < TS_SIZE && sectionOffset < total)
                    psi_split_section(packet.data(), &tsOffset, section.data(), &sectionOffset);
                psi_split_end(packet.data(), &tsOffset);
                ts_set_pid(packet.data(), pid_);
                queue.push_back(std::move(packet));
            }
        }
    }

private:
    uint16_t pid_;
    double interval_;
    double due_;
    std::vector<Bytes> sections_;
};

bool parse(int argc, char** argv, Options& o) {
    for (int i = 1; i + 1 < argc; i += 2) {
        std::string key = argv[i];
        const char* value = argv[i + 1];
        long number = std::strtol(value, nullptr, 0);
        if (key == "--in") o.in = value;
        else if (key == "--out") o.out = value;
        else if (key == "--manifest") o.manifest = value;
        else if (key == "--muxrate") o.muxrate = number;
        else if (key == "--service") o.services.push_back(static_cast<uint16_t>(number));
        else if (key == "--tsid") o.tsid = static_cast<uint16_t>(number);
        else if (key == "--onid") o.onid = static_cast<uint16_t>(number);
        else if (key == "--network-id") o.networkId = static_cast<uint16_t>(number);
        else if (key == "--change-at") o.changeAt = std::strtod(value, nullptr);
        else return false;
    }
    return !o.in.empty() && !o.out.empty() && !o.manifest.empty() && o.muxrate > 0 && !o.services.empty();
}

void writeManifest(const Options& o) {
    std::ofstream m(o.manifest);
    m << "# kind\tservice\tevent_id\tstart_utc\tduration_s\tname\n";
    for (size_t s = 0; s < o.services.size(); ++s)
        for (size_t e = 0; e < 3; ++e) {
            const EventPlan& p = PLANS[s % 2][e];
            m << "event\t" << o.services[s] << '\t' << eventId(s, e) << '\t' << FIRST_START + p.offset << '\t'
              << p.duration << '\t' << p.name << '\n';
        }
    m << "# kind\tservice\tevent_id\ttable_version\n";
    for (size_t s = 0; s < o.services.size(); ++s) {
        m << "present\t" << o.services[s] << '\t' << eventId(s, 0) << "\t0\n";
        if (o.changeAt >= 0) m << "present\t" << o.services[s] << '\t' << eventId(s, 1) << "\t1\n";
    }
    m << "network\t" << o.networkId << '\t' << networkName(0) << "\t0\n";
    if (o.changeAt >= 0) m << "network\t" << o.networkId << '\t' << networkName(1) << "\t1\n";
}

}  // namespace

int main(int argc, char** argv) {
    Options o;
    if (!parse(argc, argv, o)) {
        std::cerr << "usage: ts-si-generator --in BASE.ts --out OUT.ts --muxrate BPS --manifest FILE "
                     "--service ID [--service ID] [--tsid N] [--onid N] [--network-id N] [--change-at SECONDS]\n";
        return 2;
    }
    dvbpsi_t* handle = dvbpsi_new(nullptr, DVBPSI_MSG_NONE);

    auto pfSections = [&](uint8_t version) {
        std::vector<Bytes> sections;
        for (size_t s = 0; s < o.services.size(); ++s) {
            size_t present = version ? 1 : 0;
            sections.push_back(eitSection(handle, o, s, 0x4E, version, 0, 1, {{present, 4}}));
            sections.push_back(eitSection(handle, o, s, 0x4E, version, 1, 1, {{present + 1, 1}}));
        }
        return sections;
    };
    std::vector<Bytes> schedule;
    for (size_t s = 0; s < o.services.size(); ++s)
        schedule.push_back(eitSection(handle, o, s, 0x50, 0, 0, 0, {{0, 4}, {1, 1}, {2, 1}}));

    Carousel nit(NIT_PID, NIT_INTERVAL, 0.02), pf(EIT_PID, EIT_PF_INTERVAL, 0.03),
        sched(EIT_PID, EIT_SCHEDULE_INTERVAL, 0.25);
    nit.setSections(nitSections(handle, o, 0));
    pf.setSections(pfSections(0));
    sched.setSections(schedule);

    std::ifstream in(o.in, std::ios::binary);
    std::ofstream out(o.out, std::ios::binary);
    std::vector<Bytes> queue;
    size_t queued = 0;
    uint8_t cc[2] = {0, 0};
    bool changed = false;
    long index = 0, replaced = 0, dropped = 0;
    Bytes packet(TS_SIZE);
    while (in.read(reinterpret_cast<char*>(packet.data()), TS_SIZE)) {
        const double now = static_cast<double>(index++) * TS_SIZE * 8 / static_cast<double>(o.muxrate);
        if (!changed && o.changeAt >= 0 && now >= o.changeAt) {
            changed = true;
            nit.setSections(nitSections(handle, o, 1));
            pf.setSections(pfSections(1));
        }
        nit.tick(now, queue);
        pf.tick(now, queue);
        sched.tick(now, queue);
        if (ts_validate(packet.data()) && ts_get_pid(packet.data()) == NULL_PID && queued < queue.size()) {
            packet = queue[queued++];
            uint8_t& counter = cc[ts_get_pid(packet.data()) == NIT_PID ? 0 : 1];
            ts_set_cc(packet.data(), counter);
            counter = (counter + 1) & 0x0f;
            ++replaced;
        }
        if (queued == queue.size()) queue.clear(), queued = 0;
        out.write(reinterpret_cast<const char*>(packet.data()), TS_SIZE);
    }
    dropped = static_cast<long>(queue.size() - queued);
    dvbpsi_delete(handle);
    writeManifest(o);
    std::cerr << "ts-si-generator: " << index << " packets, " << replaced << " carry tables, " << dropped
              << " table packets left over\n";
    return out ? 0 : 1;
}
