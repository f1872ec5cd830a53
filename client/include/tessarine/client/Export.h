#pragma once

// The client library is built with symbols hidden by default;
// TESSARINE_CLIENT_API marks what belongs to its public API.
#define TESSARINE_CLIENT_API __attribute__((visibility("default")))
