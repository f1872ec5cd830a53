#pragma once

namespace ipcutil {

// A rectangle shared with the host's facades: four int32 in this order.
struct Rectangle_t {
    int x;
    int y;
    int width;
    int height;
};

static_assert(sizeof(Rectangle_t) == 16, "Rectangle_t is four int32");

}  // namespace ipcutil
