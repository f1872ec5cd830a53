// Replays a fuzzer's checked-in corpus through its entry point in an
// ordinary build, so that every input that once found a fault is run by
// ctest: a fault found once stays found. Fails when the corpus is empty.
// Arguments: corpus directories or single input files.
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <set>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int main(int argc, char** argv) {
    std::set<std::filesystem::path> files;  // in name order, so that runs repeat
    for (int i = 1; i < argc; ++i) {  // a corpus directory, or one input such as a finding
        if (!std::filesystem::is_directory(argv[i])) files.insert(argv[i]);
        else
            for (const auto& entry : std::filesystem::directory_iterator(argv[i]))
                if (entry.is_regular_file()) files.insert(entry.path());
    }
    for (const auto& file : files) {
        std::ifstream in(file, std::ios::binary);
        const std::string bytes(std::istreambuf_iterator<char>(in), {});
        std::cout << file.filename().string() << ": " << bytes.size() << " bytes" << std::endl;
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    }
    if (files.empty()) std::cerr << "no corpus files" << std::endl;
    return files.empty() ? 1 : 0;
}
