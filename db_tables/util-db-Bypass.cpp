/*
 * util-db-Bypass.cpp - bypass switches per named unit (Bypasss, three s).
 *
 * Each setter updates one column of an existing unit's row; nothing is read
 * back or logged.
 */
#include "util-db-Bypass.h"

#include <stdarg.h>

#include "util-db-accessor.h"

namespace {

using util_db::Statement;

/* Formats the statement and runs it. 0, or -1. */
int run_formatted(db_handle_t* connection, const char* fmt, ...) __attribute__((format(printf, 2, 3)));

int run_formatted(db_handle_t* connection, const char* fmt, ...) {
    Statement sql;
    va_list ap;
    va_start(ap, fmt);
    vsnprintf(sql.data(), Statement::kSize, fmt, ap);
    va_end(ap);
    return util_db::run(connection, sql.c_str());
}

}  // namespace

extern "C" {

int updateBypassPowerOn(db_handle_t* connection, const char* bypassName, int powerOn) {
    if (bypassName == NULL || connection == NULL) {
        return -1;
    }
    return run_formatted(connection, "UPDATE Bypasss SET powerOn = %d WHERE bypassName = '%s'",
                         powerOn, bypassName);
}

int updateBypassFaultOn(db_handle_t* connection, const char* bypassName, int faultOn) {
    if (bypassName == NULL || connection == NULL) {
        return -1;
    }
    return run_formatted(connection, "UPDATE Bypasss SET appFault = %d WHERE bypassName = '%s'",
                         faultOn, bypassName);
}

}  // extern "C"
