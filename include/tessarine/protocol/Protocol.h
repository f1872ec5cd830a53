#pragma once

// The whole description of the two channels, for programs that walk it.
#include "tessarine/protocol/Codes.h"
#include "tessarine/protocol/DemuxCommands.h"
#include "tessarine/protocol/Events.h"
#include "tessarine/protocol/Fields.h"
#include "tessarine/protocol/Limits.h"
#include "tessarine/protocol/Offsets.h"
#include "tessarine/protocol/RecordTypes.h"
#include "tessarine/protocol/Requests.h"
#include "tessarine/protocol/Sockets.h"
