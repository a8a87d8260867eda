/*
 * util-db-CPolicies.h - control policies (table CPolicies), by name.
 *
 * Conventions:
 *  1. Results: an identifier or a count, or 0 for a change; -1 for failure.
 *     A look-up that finds nothing also answers -1.
 *  2. Nothing is allocated for the caller.
 *  3. Names are inserted into the statements verbatim between single quotes,
 *     never escaped: pass clean values.
 */
#ifndef UTIL_DB_CPOLICIES_H
#define UTIL_DB_CPOLICIES_H

#include "util-db-common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The policyId of the first policy called `name`, or -1 when there is none or
 * the look-up fails (a stored identifier of -1 looks the same). */
UTIL_DB_API int getPolicyIdByName(db_handle_t* connection, char* name);

/* Deletes every policy called `name`; a missing name gives 0 too. 0 / -1. */
UTIL_DB_API int deletePolicyByName(db_handle_t* connection, char* name);

/* The number of policies whose serviceAppType is 1, or -1 when there is none
 * or the look-up fails. */
UTIL_DB_API int getPolicyNumBySerAPPType(db_handle_t* connection);

#ifdef __cplusplus
}
#endif

#endif /* UTIL_DB_CPOLICIES_H */
