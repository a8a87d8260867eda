/*
 * util-db-SessionControls.h - session limits between a source and a target
 * address for one session type and one service (table SessionControls).
 *
 * Conventions:
 *  1. Results are a sessionControlId, or 0, or -1 on failure (see each
 *     function).
 *  2. A control is identified by (sourceIp, targetIp, sessionType,
 *     serviceApp): insertSessionControls finds or creates it and always
 *     answers with its id.
 *  3. A limit of 0 means "no limit": it is left out of the insert (the
 *     table's default applies) and, when both are 0, out of the update.
 *  4. String values are inserted verbatim between single quotes, never
 *     escaped. No statement of this module is logged.
 */
#ifndef UTIL_DB_SESSIONCONTROLS_H
#define UTIL_DB_SESSIONCONTROLS_H

#include "util-db-common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The id of the control for (sourceIp, targetIp, sessionType, serviceApp):
 * an existing one is returned as it is (its limits and switches unchanged),
 * otherwise a new one is inserted with the given values and read back.
 * -1 when a pointer is NULL, a statement fails, or the new row can't be
 * read back with the values as given (e.g. the database cut a value). */
UTIL_DB_API int insertSessionControls(db_handle_t* connection, int frequencyUpperLimit, int totalUpperLimit,
                                      const char* sourceIp, const char* targetIp, int sessionType,
                                      const char* serviceApp, int enableLog, int enableUpperLimitWarn);

/* Deletes control sessionControlId (a missing one is a success). 0 / -1. */
UTIL_DB_API int deleteSessionControls(db_handle_t* connection, int sessionControlId);

/* Sets the switches of control sessionControlId and, when either limit is
 * nonzero, both limits. sessionControlId on success (also when no such
 * control exists), -1 when the statement fails (a NULL handle included). */
UTIL_DB_API int updateSessionControls(db_handle_t* connection, int sessionControlId, int frequencyUpperLimit,
                                      int totalUpperLimit, int enableLog, int enableUpperLimitWarn);

#ifdef __cplusplus
}
#endif

#endif /* UTIL_DB_SESSIONCONTROLS_H */
