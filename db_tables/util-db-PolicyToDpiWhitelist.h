/*
 * util-db-PolicyToDpiWhitelist.h - which DPI signatures (signame) a policy
 * (sid) exempts through a named whitelist (table PolicyToDpiWhitelist).
 *
 * Conventions:
 *  1. Results are 0 on success and -1 on failure; the two selects return the
 *     whitelist name of the first matching row as a number (atoi: a
 *     non-numeric name gives 0).
 *  2. Nothing is handed over to the caller; no integer argument is range
 *     checked.
 *  3. String values are inserted verbatim between single quotes, never
 *     escaped. No insert or delete is logged; the selects trace the value
 *     they read at priority 7.
 */
#ifndef UTIL_DB_POLICYTODPIWHITELIST_H
#define UTIL_DB_POLICYTODPIWHITELIST_H

#include "util-db-common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Adds the reference (signame, whitelist, sid). 0 / -1 (a pointer NULL,
 * statement fails). */
UTIL_DB_API int insertPolicyToDpiWhitelist(db_handle_t* connection, const char* signame, const char* whitelist,
                                           int sid);

/* Deletes the references of policy sid (none existing is a success). 0 / -1. */
UTIL_DB_API int deletePolicyToDpiWhitelistSid(db_handle_t* connection, int sid);

/* Deletes every reference. 0 / -1. */
UTIL_DB_API int deletePolicyToDpiWhitelistAll(db_handle_t* connection);

/* The whitelist of row id as a number, or -1 (no such row, failure). */
UTIL_DB_API int selectPolicyToDpiWhitelistById(db_handle_t* connection, int id);

/* The whitelist of the first row of policy sid as a number, or -1. */
UTIL_DB_API int selectPolicyToDpiWhitelistBySid(db_handle_t* connection, int sid);

/* Counts the references of every whitelist and traces the sum of the
 * whitelist numbers and counts at priority 7; `whitelist` is only checked
 * for NULL. 0 after the query, -1 when it fails or a pointer is NULL: the
 * sum is not returned. */
UTIL_DB_API int getPolicyToDpiWhitelistPolicyNum(db_handle_t* connection, const char* whitelist);

#ifdef __cplusplus
}
#endif

#endif /* UTIL_DB_POLICYTODPIWHITELIST_H */
