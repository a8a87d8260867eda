/*
 * util-db-DpiSubscriptions.h - the ARP-spoof subscription switch
 * (DpiSubscriptions) and the per-asset protection properties
 * (AssetProperties, keyed by the assetId of Assets).
 *
 * Conventions:
 *  1. int results are 0 on success and -1 on failure, or a count / a status
 *     value that is -1 on failure (a stored -1 can't be told from a failure).
 *  2. Assets are found by their addresses; an assetId argument is ignored
 *     except by clear_asset_info.
 *  3. The two array getters hand over one heap block of exactly as many
 *     elements as they return, with no terminating element; the caller
 *     releases it with ipmac_asset_free / devinfo_interfaces_free. Nothing
 *     is stored through the array pointer when they return -1.
 *  4. Text fields of the array elements hold at most 127 characters and are
 *     always terminated; get_mac_by_ip copies WITHOUT a bound: the caller's
 *     buffer must hold the MAC text as stored.
 *  5. String values are inserted verbatim between single quotes, never
 *     escaped. No statement of this module is logged; only row-fetch errors
 *     and a missing address are.
 */
#ifndef UTIL_DB_DPISUBSCRIPTIONS_H
#define UTIL_DB_DPISUBSCRIPTIONS_H

#include "util-db-common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* One asset of an array returned by get_ipmac_asset_info. */
typedef struct asset_info {
    char ipAddress[128];
    char macAddress[128];
    int assetId; /* not filled: its content is unspecified */
} asset_info_t;

/* One interface name of an array returned by get_interfaces_by_devinfo. */
typedef struct asset_intface {
    char interfaceName[128];
} asset_intface_t;

/* ---- ARP-spoof subscription ---- */

/* Sets the status of subscription type. 0 / -1 (connection NULL, type or
 * status negative, statement fails). */
UTIL_DB_API int set_arpspoof_status(db_handle_t* connection, int type, int status);

/* The status of subscription type, or -1 (connection NULL, type negative,
 * no such type, failure). */
UTIL_DB_API int get_arpspoof_status(db_handle_t* connection, int type);

/* ---- Asset properties ---- */

/* Sets value `action` (and status 0) on property `type` of the asset with
 * this IP and MAC address. 0 when the update runs (also when the asset lacks
 * that property); -1 when an argument is NULL, no asset matches or a
 * statement fails. */
UTIL_DB_API int set_ipmac_asset_status(db_handle_t* connection, const char* ip, const char* mac, int assetId,
                                       int type, int action);

/* The addresses of the assets having property `type`: the count, with the
 * new array stored in *asset_information (free with ipmac_asset_free); -1
 * when there is none or on failure. */
UTIL_DB_API int get_ipmac_asset_info(db_handle_t* connection, int type, asset_info_t** asset_information);

/* Frees an array of get_ipmac_asset_info (NULL is allowed). Always 0. */
UTIL_DB_API int ipmac_asset_free(db_handle_t* connection, asset_info_t* asset_information);

/* The interfaces of the enabled zone of the asset with this IP and MAC
 * address: the count, with the new array stored in *ifnames (free with
 * devinfo_interfaces_free); -1 when there is none or on failure. */
UTIL_DB_API int get_interfaces_by_devinfo(db_handle_t* connection, const char* ip, const char* mac,
                                          asset_intface_t** ifnames);

/* Frees an array of get_interfaces_by_devinfo (NULL is allowed). Always 0. */
UTIL_DB_API int devinfo_interfaces_free(db_handle_t* connection, asset_intface_t* ifnames);

/* Adds property `type` (status, value) to the first asset found by ip and/or
 * mac (either may be NULL, not both). 0 once the look-up has run, even when
 * no asset matches or the insert fails; -1 for connection NULL, both
 * addresses NULL or a failed look-up. */
UTIL_DB_API int set_ipmac_asset_info(db_handle_t* connection, const char* ip, const char* mac, int assetId,
                                     int type, int status, int value);

/* Deletes every property of asset assetId, or, when assetId is below 1, of
 * the first asset found by ip and/or mac. 0 / -1. When no asset matches, the
 * look-up itself is run once more and its status (normally 0) is returned. */
UTIL_DB_API int clear_asset_info(db_handle_t* connection, const char* ip, const char* mac, int assetId);

/* Copies the MAC address of the first asset with address ip into mac
 * (unbounded, see convention 4). 0, or -1 (an argument NULL, no asset, no
 * MAC stored, failure). */
UTIL_DB_API int get_mac_by_ip(db_handle_t* connection, const char* ip, char* mac);

#ifdef __cplusplus
}
#endif

#endif /* UTIL_DB_DPISUBSCRIPTIONS_H */
