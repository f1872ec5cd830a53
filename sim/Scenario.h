#pragma once

#include <array>
#include <list>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "ipcutil/DsmCCCommand_t.h"
#include "ipcutil/Rectangle_t.h"
#include "middlewarefacade/Property_.h"
#include "middlewarefacade/Records.h"
#include "tessarine/protocol/Codes.h"

namespace tessarine {
namespace sim {

// One thing wrong in a scenario file, located by a JSON path such as
// "$.si.services[1].text0".
struct ScenarioProblem {
    std::string path;
    std::string expected;
    std::string found;

    std::string describe() const { return path + ": expected " + expected + ", found " + found; }
};

// What the SI facade answers. Kept as the facade's own records so that any
// source (a scenario, a parsed transport stream) can fill it.
struct SiTables {
    std::string codingFormat;
    std::string serviceDescription;
    int currentService = -1;
    bool protectedService = false;
    std::list<int> caSystemIds;
    std::list<middlewarefacade::Service_> services;
    std::list<middlewarefacade::ProgramEvent_> programEvents;
    // value1 == -1 means "no current event".
    middlewarefacade::ProgramEvent_ programEvent{0, -1, 0, 0, {}, {}, {}, 0, 0, 0, 0, {}, {}, {}, {}, {}, {}};
    // value1 == -1 means "no transport stream".
    middlewarefacade::TransportStream_ transportStream{0, -1, {}, 0, 0, 0, 0};
    // value0 == -1 means "no network".
    middlewarefacade::Network_ network{{}, -1};
    std::map<int, std::list<middlewarefacade::ServiceComponent_>> serviceComponents;
    std::map<int, std::list<middlewarefacade::PMT_>> pmts;
    std::list<middlewarefacade::Descriptors_> networkDescriptors;
    std::map<int, std::list<middlewarefacade::Descriptors_>> transportStreamDescriptors;
    std::map<int, std::list<middlewarefacade::Descriptors_>> serviceDescriptors;
    std::map<std::pair<int, int>, std::list<middlewarefacade::Descriptors_>> programEventDescriptors;
    std::map<int, std::list<middlewarefacade::Descriptors_>> serviceComponentDescriptors;
};

struct VideoSettings {
    ipcutil::Rectangle_t bounds{0, 0, 1920, 1080};
    std::string language3;
    std::string language5;
    std::list<std::string> languages;
    // Answers of the rate queries 9 to 16, in that order.
    std::array<int, VIDEO_GET_RATE_16 - VIDEO_GET_RATE_9 + 1> rates{{-1, -1, -1, -1, -1, -1, -1, -1}};
    std::array<ipcutil::Rectangle_t, 2> cropValues{{{0, 0, 1920, 1080}, {0, 0, 1920, 1080}}};
};

struct TunerSettings {
    struct IdList {
        int kind = 0;
        std::optional<int> parameter;  // absent: answers every parameter
        std::list<int> ids;
    };
    struct Channel {
        int first = 0;
        int second = 0;
        std::string name;
        int number = -1;
    };
    int currentTransportStreamId = -1;
    std::vector<IdList> idLists;
    std::vector<Channel> channels;
};

struct CarouselSettings {
    struct Download {
        double after = 0;  // seconds after the mount
        std::string first;
        std::string second;
    };
    std::string name;
    std::string mountAnswer;
    std::vector<Download> downloads;
};

struct MediaItem {
    std::string locator;
    int duration = 0;  // milliseconds
};

struct StreamEvent {
    double at = 0;                // seconds after the client connects
    std::optional<double> every;  // repeat period in seconds
    std::string name = "nclEditingCommand";
    ipcutil::DsmCCCommand_t command{0, 0, 0, {}};
};

struct GraphicsChange {
    double at = 0;
    ipcutil::Rectangle_t first{};
    ipcutil::Rectangle_t second{};
};

struct Section {
    int pid = 0;
    std::vector<unsigned char> data;  // its first byte is the table id
};

// Everything the simulated receiver answers and does on its own.
struct Scenario {
    VideoSettings video;
    std::list<middlewarefacade::Property_> properties;
    TunerSettings tuner;
    std::vector<CarouselSettings> carousels;
    SiTables si;
    std::vector<int> versionFlags;
    std::vector<MediaItem> media;
    std::vector<StreamEvent> streamEvents;
    std::vector<GraphicsChange> graphics;
    std::vector<Section> sections;
    // A transport stream to answer SI and section filters from (a file, "-"
    // or udp://ADDR:PORT); empty: the scenario answers them alone.
    std::string ts;

    // Parses and validates a scenario document. Every problem found is
    // appended to `problems`; the result is meaningful only when none is.
    static Scenario parse(const std::string& text, std::vector<ScenarioProblem>& problems);
    // The scenario compiled into the program.
    static const std::string& defaultText();
};

}  // namespace sim
}  // namespace tessarine
