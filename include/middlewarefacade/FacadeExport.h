#pragma once

// The facades are the host's: the library calls their factories, which the
// host defines. Default visibility lets the library reference them although
// it is built with symbols hidden by default.
#define MIDDLEWAREFACADE_API __attribute__((visibility("default")))
