/*
 * util-db-Bypass.h - per-unit bypass switches (table Bypasss).
 *
 * Conventions:
 *  1. Results are int: 0 on success, -1 when an argument check or the
 *     statement fails.
 *  2. The functions update an existing unit's row by its name; they never
 *     create one. A name that does not exist succeeds (0) and changes nothing.
 *  3. Nothing is allocated for the caller; the caller keeps ownership of the
 *     strings it passes.
 *  4. The unit name is put into the statement verbatim between single quotes,
 *     never escaped; statements are cut silently at 1023 characters.
 */
#ifndef UTIL_DB_BYPASS_H
#define UTIL_DB_BYPASS_H

#include "util-db-common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Sets whether unit bypassName engages bypass on power-off (powerOn, stored
 * as given). -1 when connection or bypassName is NULL or the statement fails. */
UTIL_DB_API int updateBypassPowerOn(db_handle_t* connection, const char* bypassName, int powerOn);

/* Sets whether unit bypassName engages bypass on an application fault
 * (faultOn, stored as given in appFault). -1 when connection or bypassName is
 * NULL or the statement fails. */
UTIL_DB_API int updateBypassFaultOn(db_handle_t* connection, const char* bypassName, int faultOn);

#ifdef __cplusplus
}
#endif

#endif /* UTIL_DB_BYPASS_H */
