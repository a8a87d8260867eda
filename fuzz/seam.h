// The fuzzing seam: a client library without a server (seam.cpp).
#pragma once

#include <fuzzer/FuzzedDataProvider.h>
#include <mysql.h>

namespace seam {
// Results, failures and pings of the calls until end() come from `input`;
// statements longer than the largest statement buffer trap unless any_length.
void begin(FuzzedDataProvider& input, bool any_length);
// Frees every result set; answers how many the library had not freed.
int end();
}  // namespace seam
