#pragma once
#include "host/commands.h"

/** A reply in words for a person: "ok  steps gain 1/0 = 40, device 1 off". */
std::string spoken(const Json& reply);
