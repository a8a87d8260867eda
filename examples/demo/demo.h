/* The demo configures a small appliance through the library, family by family,
 * and prints what it reads back. Each family lives in its own file. */
#ifndef UTIL_DB_DEMO_H
#define UTIL_DB_DEMO_H

#include "util-database.h"

/* Each returns 0 when every step behaved as expected, else the number of failures. */
int demo_interfaces(db_handle_t* h);
int demo_zones(db_handle_t* h);
int demo_services(db_handle_t* h);
int demo_applications(db_handle_t* h);
int demo_device(db_handle_t* h);

/* Prints "  ok    what" or "  FAIL  what" and returns 1 on failure. */
int demo_check(int ok, const char* what);

#endif
