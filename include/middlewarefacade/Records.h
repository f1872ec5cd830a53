#pragma once

// Layout rule for every facade record: the fields stand in the order given,
// laid out naturally for the platform (int as int32, std::string, std::list).
// A host that declares the same fields in the same order gets the same
// layout. Members named `reserved` hold bytes the bridge never reads.
#include "middlewarefacade/Descriptors_.h"
#include "middlewarefacade/Network_.h"
#include "middlewarefacade/PMT_.h"
#include "middlewarefacade/ProgramEvent_.h"
#include "middlewarefacade/Property_.h"
#include "middlewarefacade/ServiceComponent_.h"
#include "middlewarefacade/Service_.h"
#include "middlewarefacade/TransportStream_.h"
