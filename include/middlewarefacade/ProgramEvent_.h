#pragma once

#include <list>
#include <string>

namespace middlewarefacade {

// A program event as the SI facade gives it. Field order is the binary
// contract (see Records.h).
struct ProgramEvent_ {
    int value0;
    int value1;
    int value2;
    int value3;
    std::string text0;
    std::string text1;
    std::string text2;
    int reserved;  // never read
    int value4;
    int value5;
    int value6;
    std::list<unsigned char> bytes0;
    std::list<unsigned char> bytes1;
    std::list<unsigned char> bytes2;
    std::list<std::string> strings0;
    std::list<std::string> strings1;
    std::list<std::string> strings2;
};

}  // namespace middlewarefacade
