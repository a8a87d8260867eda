// The fuzzing seam: a client library without a server (seam.cpp).
#pragma once

#include <fuzzer/FuzzedDataProvider.h>
#include <mysql.h>

namespace seam {
// Results, failures and pings of the calls until end() come from `input`.
void begin(FuzzedDataProvider& input);
void end();
}  // namespace seam
