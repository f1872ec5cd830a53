#pragma once

#include <string>

namespace tessarine {
namespace client {

// A system property as the bridge lists it. Texts are at most 254 characters.
struct SystemProperty {
    std::string name;
    std::string value;
};

}  // namespace client
}  // namespace tessarine
