/*
 * util-db-addresspools.h - address pools bound to interfaces (table
 * AddressPools).
 *
 * Conventions:
 *  1. A pool is addressed by its name. Names are kept unique only by
 *     insertAddressPoolsTable (add or replace); addAddressPoolsNameTable adds a
 *     row without looking. Look-ups use the first row of a name.
 *  2. int results are 0 on success and -1 on any failure; a write whose name
 *     matches no row succeeds (0) and changes nothing. get_address_type_by_name
 *     returns the stored type, or -1 (which a stored type of -1 also gives).
 *  3. String look-ups copy the value into the caller's buffer without a bound
 *     and return it, or NULL leaving the buffer as it was (also for a value
 *     that is NULL in the database). Nothing is allocated for the caller.
 *  4. type and enable are stored as given; 1 in enable makes a pool count for
 *     its interface's zone (selectIpaddressInfoByNameSA).
 *  5. Names and values are put into the statements verbatim between single
 *     quotes, never escaped; statements are cut silently at 1023 characters.
 */
#ifndef UTIL_DB_ADDRESSPOOLS_H
#define UTIL_DB_ADDRESSPOOLS_H

#include "util-db-common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Deletes every pool called name. */
UTIL_DB_API int deleteAddressPoolsTableByName(db_handle_t* connection, char* name);

/* Adds pool name, or overwrites interfaceName, ipAddress, type and enable of
 * every pool of that name when one exists. */
UTIL_DB_API int insertAddressPoolsTable(db_handle_t* connection, char* name, char* interfaceName, char* ipAddress,
                                        int type, int enable);

/* Adds a pool with only its name set (other columns take their defaults). */
UTIL_DB_API int addAddressPoolsNameTable(db_handle_t* connection, char* name);

/* Write one column of every pool called name. */
UTIL_DB_API int updateAddressPoolsTableEnable(db_handle_t* connection, char* name, int enable);
UTIL_DB_API int updateAddressPoolsTableInterface(db_handle_t* connection, char* name, char* interfaceName);
UTIL_DB_API int updateAddressPoolsTableIp(db_handle_t* connection, char* name, char* ipAddress);

/* Logs every row of AddressPools at the debug priority, one record per cell.
 * 0, or -1. */
UTIL_DB_API int util_db_query_commonAddressPools(db_handle_t* connection);

/* Copy into ret_str (unbounded) the interface / the address of pool name.
 * Return ret_str, or NULL. */
UTIL_DB_API char* select_interface_by_name_AddPools(db_handle_t* connection, char* name, char* ret_str);
UTIL_DB_API char* select_ipAddress_by_name_ipAdd(db_handle_t* connection, char* name, char* ret_str);

/* The type of pool name, or -1. */
UTIL_DB_API int get_address_type_by_name(db_handle_t* connection, char* name);

#ifdef __cplusplus
}
#endif

#endif /* UTIL_DB_ADDRESSPOOLS_H */
