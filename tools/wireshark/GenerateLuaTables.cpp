// Writes the protocol tables of tessarine.lua from the C++ protocol
// description, so that the dissector and the bridge cannot disagree.
//   generate-lua-tables            print the generated part
//   generate-lua-tables --check F  exit 1 when F's generated part differs
//   generate-lua-tables --update F replace F's generated part
#include <fstream>
#include <iostream>
#include <set>
#include <sstream>
#include <string>

#include "WireNames.h"

namespace {

using namespace tessarine::protocol;
using wire::WireNames;

const std::string BEGIN = "-- BEGIN GENERATED from include/tessarine/protocol by generate-lua-tables\n";
const std::string END = "-- END GENERATED\n";

std::string quoted(const std::string& text) { return "\"" + text + "\""; }

std::string fieldList(std::int32_t type, Fields fields) {
    std::ostringstream out;
    out << "{";
    for (const Field& f : fields) {
        out << "{" << quoted(WireNames::field(type, f)) << ", " << f.offset << ", " << f.width << ", "
            << quoted(WireNames::kind(f.kind)) << "}, ";
    }
    out << "}";
    return out.str();
}

std::string codeKey(std::int32_t code) { return code == ANY_CODE ? "any" : "[" + std::to_string(code) + "]"; }

const char* shape(AnswerShape shape) {
    switch (shape) {
    case AnswerShape::InPlace: return "inplace";
    case AnswerShape::List: return "list";
    case AnswerShape::None: break;
    }
    return "none";
}

std::string generate() {
    std::ostringstream out;
    out << BEGIN << "local T = {}\n";
    out << "T.MESSAGE_SIZE = " << tessarine::MESSAGE_SIZE << "\n";
    out << "T.TYPE_OFFSET = " << tessarine::TYPE_OFFSET << "\n";
    out << "T.CODE_OFFSET = " << tessarine::CODE_OFFSET << "\n";
    out << "T.LIST_HEADER = " << tessarine::MSG_LIST_HEADER << "\n";
    out << "T.types = {\n";
    for (const RecordType& t : RECORD_TYPES) {
        out << "  [" << t.type << "] = {name = " << quoted(t.name) << ", family = " << quoted(WireNames::family(t.type))
            << "},\n";
    }
    out << "}\n";

    out << "T.fields = {\n";  // one filter field per name, with its kind
    std::set<std::string> seen;
    WireNames::forEachField([&](std::int32_t type, const Field& f) {
        const std::string name = WireNames::field(type, f);
        if (seen.insert(name).second) out << "  {" << quoted(name) << ", " << quoted(WireNames::kind(f.kind)) << "},\n";
    });
    out << "}\n";

    out << "T.requests = {}\n";
    for (const RecordType& t : RECORD_TYPES) {
        out << "T.requests[" << t.type << "] = {\n";
        for (const Request& r : REQUESTS) {
            if (r.type != t.type) continue;
            out << "  " << codeKey(r.code) << " = {name = " << quoted(r.name) << ", fields = " << fieldList(r.type, r.fields)
                << ",\n    answer = {shape = " << quoted(shape(r.answer.shape))
                << ", fields = " << fieldList(r.type, r.answer.fields)
                << ", trailing = " << quoted(WireNames::trailing(r.answer.trailing)) << "}},\n";
        }
        out << "}\n";
    }

    out << "T.events = {}\n";
    for (const RecordType& t : RECORD_TYPES) {
        out << "T.events[" << t.type << "] = {\n";
        for (const Event& e : EVENTS) {
            if (e.type != t.type) continue;
            out << "  " << codeKey(e.code) << " = {name = " << quoted(e.name) << ", fields = " << fieldList(e.type, e.fields);
            if (e.chunked != nullptr) {
                out << ", chunked = " << quoted(WireNames::field(e.type, *findField(e.fields, e.chunked)));
            }
            out << "},\n";
        }
        out << "}\n";
    }

    out << "T.demux = {\n";
    for (const DemuxCommand& c : DEMUX_COMMANDS) {
        out << "  [" << c.word << "] = {name = " << quoted(c.name) << ", answered = " << (c.answered ? "true" : "false")
            << ", args = {";
        for (const DemuxArgument& a : c.arguments) {
            out << "{" << quoted(WireNames::argument(a)) << ", "
                << quoted(a.kind == DemuxArgumentKind::Word ? "word" : "string") << "}, ";
        }
        out << "}},\n";
    }
    out << "}\n" << END;
    return out.str();
}

// The file with its generated part split out; false when it has none.
bool split(const std::string& text, std::string& before, std::string& part, std::string& after) {
    const auto begin = text.find(BEGIN);
    const auto end = text.find(END);
    if (begin == std::string::npos || end == std::string::npos || end < begin) return false;
    before = text.substr(0, begin);
    part = text.substr(begin, end + END.size() - begin);
    after = text.substr(end + END.size());
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    const std::string tables = generate();
    if (argc == 1) {
        std::cout << tables;
        return 0;
    }
    if (argc != 3) {
        std::cerr << "usage: generate-lua-tables [--check|--update FILE]\n";
        return 2;
    }
    const std::string mode = argv[1], path = argv[2];
    std::ifstream in(path);
    std::stringstream text;
    text << in.rdbuf();
    std::string before, part, after;
    if (!in || !split(text.str(), before, part, after)) {
        std::cerr << path << ": no generated part\n";
        return 2;
    }
    if (mode == "--check") {
        if (part == tables) return 0;
        std::cerr << path << ": the generated tables differ from the protocol description; run generate-lua-tables --update\n";
        return 1;
    }
    std::ofstream(path) << before << tables << after;
    return 0;
}
