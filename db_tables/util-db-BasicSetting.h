/*
 * util-db-BasicSetting.h - the device's basic settings (table BasicSettings)
 * and its remote syslog servers (table Syslogs).
 *
 * Conventions:
 *  1. Results are int: 0 on success, -1 on failure, except
 *     insertSyslogServerBasicSettings, which answers the id of a server that
 *     already exists (see there). Treat any value >= 0 as success.
 *  2. The BasicSettings setters update their columns without a WHERE clause:
 *     they act on every row of the table, and on an empty table they succeed
 *     and change nothing. insertWorkModeBasicSettings creates a row.
 *  3. Nothing is allocated for the caller; nothing is read back into caller
 *     buffers. The caller keeps ownership of every string it passes.
 *  4. String values are put into the statements verbatim between single
 *     quotes, never escaped: a value holding a quote makes the call fail.
 *     Statements are cut silently at 1023 characters.
 *  5. Protocol codes (sysProt): 1 is "TCP", 2 is "UDP"; any other is refused.
 */
#ifndef UTIL_DB_BASICSETTING_H
#define UTIL_DB_BASICSETTING_H

#include "util-db-common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Work mode, time, NTP and syslog storage (every row of BasicSettings) ---- */

/* Sets the work mode. -1 when connection is NULL or the statement fails. */
UTIL_DB_API int setWorkModeBasicSettings(db_handle_t* connection, int w_modeType);

/* Stores w_enableSwitch as given (despite the name, 1 switches automatic
 * work-mode switching on). -1 when connection is NULL or the statement fails. */
UTIL_DB_API int autoswitchWorkModeBasicSettingsOff(db_handle_t* connection, int w_enableSwitch);

/* Switches automatic work-mode switching on (w_enableSwitch = 1) with the time
 * of the switch and the mode switched to. -1 when connection is NULL or the
 * statement fails. */
UTIL_DB_API int autoswitchWorkModeBasicSettingsOn(db_handle_t* connection, const char* w_switchTime,
                                                  int w_switchModeType);

/* Inserts a row of kind basicSettingType. -1 when connection is NULL,
 * basicSettingType is negative or the statement fails. */
UTIL_DB_API int insertWorkModeBasicSettings(db_handle_t* connection, int basicSettingType);

/* Sets the manual system time text. -1 when connection is NULL or the
 * statement fails. */
UTIL_DB_API int timesettingBasicSettingsOff(db_handle_t* connection, const char* t_systemTime);

/* Switches NTP on or off and sets its server address. -1 when connection is
 * NULL or the statement fails. */
UTIL_DB_API int activateNtpBasicSettings(db_handle_t* connection, int t_activateNtp, const char* t_ntpIp);

/* Sets where syslog output is stored. -1 when connection is NULL or the
 * statement fails. */
UTIL_DB_API int setSyslogTurnBasicSettings(db_handle_t* connection, int l_syslogStorageType);

/* ---- Remote syslog servers (Syslogs) ---- */

/* Adds a syslog server unless one with the same address, protocol and port
 * exists. Returns that server's syslogId when it exists (nothing inserted),
 * 0 when a new row was inserted (its id is not read back), -1 when
 * connection or syslogIp is NULL, sysProt is not 1 or 2, or a statement
 * fails. */
UTIL_DB_API int insertSyslogServerBasicSettings(db_handle_t* connection, const char* syslogIp, int sysProt,
                                                int syslogPort);

/* Deletes every syslog server that shares the address, OR the protocol, OR
 * the port with the one given: a deliberately wide delete, not just the exact
 * match. Returns 0, or -1 when syslogIp is NULL, sysProt is not 1 or 2
 * (nothing is deleted), connection is NULL or the statement fails. */
UTIL_DB_API int deleteSyslogServerBasicSettings(db_handle_t* connection, const char* syslogIp, int sysProt,
                                                int syslogPort);

#ifdef __cplusplus
}
#endif

#endif /* UTIL_DB_BASICSETTING_H */
