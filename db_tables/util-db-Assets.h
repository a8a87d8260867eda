/*
 * util-db-Assets.h - assets by name (table Assets, whose rows other processes
 * of the appliance write).
 *
 * Conventions:
 *  1. An asset is addressed by its name; if several share it, the first row
 *     found is used.
 *  2. String look-ups copy the value into the caller's buffer without a bound
 *     and return it, or NULL leaving the buffer as it was. The asset's value
 *     must be set: one that is NULL in the database gives NULL. Nothing is
 *     allocated for the caller.
 *  3. deleteAssetByName returns 0 on success (also for an unknown name) and -1
 *     on failure. The asset's property rows are not deleted with it.
 *  4. Names are put into the statements verbatim between single quotes, never
 *     escaped; statements are cut silently at 1023 characters.
 */
#ifndef UTIL_DB_ASSETS_H
#define UTIL_DB_ASSETS_H

#include "util-db-common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Copies into ret_str (unbounded) the name of the zone asset name belongs to.
 * Returns ret_str, or NULL. */
UTIL_DB_API char* selectSAnameByAssetname(db_handle_t* connection, char* name, char* ret_str);

/* Copies into ret_str (unbounded) the address of asset name. Returns ret_str,
 * or NULL. */
UTIL_DB_API char* selectipAddressByAssetname(db_handle_t* connection, char* name, char* ret_str);

/* Deletes every asset called name. */
UTIL_DB_API int deleteAssetByName(db_handle_t* connection, char* name);

#ifdef __cplusplus
}
#endif

#endif /* UTIL_DB_ASSETS_H */
