/*
 * util-db-Bypass.cpp - bypass switches per named unit (Bypasss, three s).
 *
 * Each setter updates one column of an existing unit's row; nothing is read
 * back or logged.
 */
#include "util-db-Bypass.h"

#include "util-db-accessor.h"

extern "C" {

int updateBypassPowerOn(db_handle_t* connection, const char* bypassName, int powerOn) {
    if (bypassName == NULL || connection == NULL) {
        return -1;
    }
    return util_db::run_format(connection, "UPDATE Bypasss SET powerOn = %d WHERE bypassName = '%s'",
                         powerOn, bypassName);
}

int updateBypassFaultOn(db_handle_t* connection, const char* bypassName, int faultOn) {
    if (bypassName == NULL || connection == NULL) {
        return -1;
    }
    return util_db::run_format(connection, "UPDATE Bypasss SET appFault = %d WHERE bypassName = '%s'",
                         faultOn, bypassName);
}

}  // extern "C"
