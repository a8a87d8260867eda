/*
 * util-db-SecurityAreas.h - security zones (table SecurityAreas), their member
 * interfaces (table SecurityAreaInterfaces) and the zone look-ups.
 *
 * Conventions:
 *  1. A zone is addressed by its name; its members point at it by the zone's
 *     numeric id, which the functions look up by name first. Several
 *     statements of one call are not atomic.
 *  2. int results are 0 on success and -1 on any failure (a NULL argument, a
 *     zone that is missing or already exists, a failed statement), except
 *     selectInterfaceInfoByNameSA, which returns a count or -1.
 *  3. String look-ups write into the caller's buffer and return it, or NULL;
 *     on failure the buffer is left as it was. Nothing is allocated for the
 *     caller.
 *  4. Buffers are sized by the caller: select_name_by_interfacename_SA copies
 *     the zone name without a bound; the two list look-ups are bounded by
 *     ret_len, and a list cut at the end of the buffer stays terminated.
 *  5. Lists are joined by a single "," without blanks, in the order the
 *     database returns the rows.
 *  6. Names are put into the statements verbatim between single quotes, never
 *     escaped; statements are cut silently at 1023 characters.
 */
#ifndef UTIL_DB_SECURITYAREAS_H
#define UTIL_DB_SECURITYAREAS_H

#include "util-db-common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Zones and their member interfaces ---- */

/* Creates zone name (enable takes the column's default). -1 when a zone of
 * that name already exists. */
UTIL_DB_API int insertSecurityAreas(db_handle_t* connection, char* name);

/* Deletes the member interfaces of zone name, then the zone itself. -1 when
 * the zone is unknown (nothing deleted) or a delete fails (members already
 * gone when the zone delete fails). Assets naming the zone are kept. */
UTIL_DB_API int deleteSecurityAreas(db_handle_t* connection, char* name);

/* Writes enable (as given) into zone name. An unknown name succeeds (0). */
UTIL_DB_API int updateSecurityAreas(db_handle_t* connection, char* name, int enable);

/* Adds interfaceName as a member of zone name (no duplicate check). -1 when
 * the zone is unknown. */
UTIL_DB_API int insertMainFrame(db_handle_t* connection, char* name, char* interfaceName);

/* Removes every member interface of zone name; the zone stays. -1 when the
 * zone is unknown; 0 for a zone without members. */
UTIL_DB_API int deleteMainFrame(db_handle_t* connection, char* name);

/* ---- Zone look-ups ---- */

/* Copies into ret_str (unbounded) the name of the zone that has interfaceName
 * as a member (the first one found). Returns ret_str, or NULL. */
UTIL_DB_API char* select_name_by_interfacename_SA(db_handle_t* connection, char* interfaceName, char* ret_str);

/* Writes the member interfaces of zone name into ret_val (ret_len bytes,
 * ret_len > 0), comma-joined. Returns the number of members (1 or more), or -1
 * (also for a zone without members). */
UTIL_DB_API int selectInterfaceInfoByNameSA(db_handle_t* connection, char* name, char* ret_val, int ret_len);

/* Writes the addresses zone name covers into ret_str (ret_len bytes, ret_len
 * not 0): the enabled pool address of each member interface, up to the first
 * member without one, then the enabled asset addresses of the zone,
 * comma-joined; "any" when there are none. Returns ret_str, or NULL (also for
 * a zone without members). Pass an empty buffer: when the member list cannot
 * be read the buffer is not cleared first. A negative ret_len sets no bound:
 * the list (or "any") is written whole, the caller vouching for its buffer. */
UTIL_DB_API char* selectIpaddressInfoByNameSA(db_handle_t* connection, char* name, char* ret_str, int ret_len);

/* Log every row of SecurityAreas / SecurityAreaInterfaces at the debug
 * priority, one record per cell. 0, or -1. */
UTIL_DB_API int util_db_query_commonSecurityAreas(db_handle_t* connection);
UTIL_DB_API int util_db_query_commonSecurityAreaInterfaces(db_handle_t* connection);

#ifdef __cplusplus
}
#endif

#endif /* UTIL_DB_SECURITYAREAS_H */
