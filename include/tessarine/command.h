#pragma once

// The `command` enumeration (the codes of MSG_VIDEO) is one of the protocol's codes.
#include "tessarine/protocol/Codes.h"
