#pragma once

#include <cstdint>
#include <list>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "middlewarefacade/Records.h"

namespace tessarine::broadcast {

using Bytes = std::vector<uint8_t>;

// One descriptor of a loop: its tag and its body (the bytes after tag and length).
struct Descriptor {
    uint8_t tag = 0;
    Bytes body;
};
using DescriptorLoop = std::vector<Descriptor>;

struct PmtStream {
    uint8_t type = 0;
    uint16_t pid = 0;
    DescriptorLoop descriptors;
};

struct PmtTable {
    uint16_t program = 0;
    uint16_t pid = 0;
    uint16_t pcrPid = 0;
    uint8_t version = 0;
    DescriptorLoop descriptors;
    std::vector<PmtStream> streams;
};

struct SdtService {
    uint16_t id = 0;
    uint8_t running = 0;
    bool freeCa = false;
    DescriptorLoop descriptors;
};

struct SdtTable {
    uint16_t tsid = 0;
    uint16_t onid = 0;
    uint8_t version = 0;
    std::vector<SdtService> services;
};

struct NitStream {
    uint16_t tsid = 0;
    uint16_t onid = 0;
    DescriptorLoop descriptors;
};

struct NitTable {
    uint16_t networkId = 0;
    uint8_t version = 0;
    DescriptorLoop descriptors;
    std::vector<NitStream> streams;
};

struct EitEvent {
    uint16_t id = 0;
    int64_t start = -1;  // seconds since the Unix epoch, UTC; -1 when undefined
    int32_t duration = 0;
    uint8_t running = 0;
    bool freeCa = false;
    DescriptorLoop descriptors;
};

struct EitTable {
    uint16_t service = 0;
    uint8_t tableId = 0;
    uint8_t version = 0;
    std::vector<EitEvent> events;  // for present/following: [0] present, [1] following
    bool hasPresent = false;       // present/following: section 0 carried an event
};

// The service information of one transport stream, as decoded from it, and
// the answers of the SI facade's queries in the facade's records. Tables are
// replaced whole when a new version arrives. Thread-safe: the input thread
// writes, facade calls read.
class SiModel {
public:
    // Writers, called by the table decoders.
    void setPat(uint16_t tsid, uint8_t version, const std::vector<std::pair<uint16_t, uint16_t>>& programs);
    void setPmt(PmtTable pmt);
    void setSdt(SdtTable sdt);
    void setNit(NitTable nit);
    void setEit(EitTable eit);
    void markScrambled(uint16_t pid);

    // The service that counts as tuned; -1 returns to the first of the PAT.
    void setCurrentService(int serviceId);

    // Program map PIDs of the PAT, for the decoders to follow.
    std::vector<std::pair<uint16_t, uint16_t>> programs() const;
    // Number of table versions taken in so far.
    uint64_t updates() const;
    // Grows with every change that can alter an answer (tables, scrambled
    // components, the current service): readers that copy the answers
    // compare it to know when to copy again.
    uint64_t changes() const;

    // The SI facade's queries (see docs for the mapping). Records that the
    // stream does not carry yet are empty optionals; lists are then empty.
    std::optional<middlewarefacade::Network_> getNetwork() const;
    std::list<middlewarefacade::Descriptors_> getNetworkDescriptors() const;
    std::optional<middlewarefacade::TransportStream_> getTransportStream() const;
    std::list<middlewarefacade::Descriptors_> getTransportStreamDescriptors(int tsid) const;
    std::list<middlewarefacade::Service_> getServices() const;
    int getCurrentService() const;
    std::list<middlewarefacade::Descriptors_> getServiceDescriptors(int serviceId) const;
    std::list<middlewarefacade::ProgramEvent_> getProgramEvents() const;
    std::optional<middlewarefacade::ProgramEvent_> getProgramEvent() const;
    std::list<middlewarefacade::Descriptors_> getProgramEventDescriptors(int serviceId, int eventId) const;
    std::list<middlewarefacade::ServiceComponent_> getServiceComponents(int serviceId) const;
    std::list<middlewarefacade::Descriptors_> getServiceComponentDescriptors(int pid) const;
    std::list<middlewarefacade::PMT_> getPMTs(int program) const;
    std::string getSICodingFormat() const;
    std::list<int> getCASystemIds() const;
    std::optional<bool> isProtectedService() const;
    std::string getServiceDescription() const;

private:
    int currentLocked() const;
    int resolveService(int serviceId) const;
    const SdtService* sdtServiceLocked(int serviceId) const;
    std::vector<const EitEvent*> eventsLocked(uint16_t service) const;
    middlewarefacade::ProgramEvent_ eventRecord(uint16_t service, const EitEvent& event) const;

    mutable std::mutex mutex_;
    std::optional<uint16_t> tsid_;
    uint8_t patVersion_ = 0;
    std::vector<std::pair<uint16_t, uint16_t>> programs_;  // program number, PMT PID
    std::map<uint16_t, PmtTable> pmts_;                    // by program number
    std::optional<SdtTable> sdt_;
    std::optional<NitTable> nit_;
    std::map<std::pair<uint16_t, uint8_t>, EitTable> eits_;  // by service and table id
    std::vector<bool> scrambled_ = std::vector<bool>(8192, false);
    int current_ = -1;
    uint64_t updates_ = 0;
    uint64_t changes_ = 0;
};

// Decodes a DVB text field (its first bytes may select a character table)
// into UTF-8.
std::string decodeDvbText(const uint8_t* text, size_t length);

}  // namespace tessarine::broadcast
