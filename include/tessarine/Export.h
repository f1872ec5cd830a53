#pragma once

// The library is built with symbols hidden by default; TESSARINE_API marks
// each class and function that belongs to its exported API.
#define TESSARINE_API __attribute__((visibility("default")))
