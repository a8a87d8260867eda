/*
 * util-db-BasicSetting.cpp - basic device settings (BasicSettings) and remote
 * syslog servers (Syslogs).
 *
 * The setters carry no WHERE clause: the table is meant to hold the device's
 * one settings row, and every row is updated. Statements are not logged.
 */
#include "util-db-BasicSetting.h"

#include <stdarg.h>
#include <stdlib.h>

#include "util-db-accessor.h"

namespace {

using util_db::Result;
using util_db::Statement;


/* A BasicSettings setter: refuses a NULL connection, then formats the
 * statement and runs it. 0, or -1. */
int set_basic(db_handle_t* connection, const char* fmt, ...) __attribute__((format(printf, 2, 3)));

int set_basic(db_handle_t* connection, const char* fmt, ...) {
    if (connection == NULL) {
        return -1;
    }
    util_db::Statement sql(connection);
    va_list ap;
    va_start(ap, fmt);
    sql.vformat(fmt, ap);
    va_end(ap);
    return util_db::run(connection, sql);
}

/* The protocol text of a protocol code: 1 "TCP", 2 "UDP", else NULL. */
const char* protocol_text(int sysProt) {
    switch (sysProt) {
        case 1:
            return "TCP";
        case 2:
            return "UDP";
        default:
            return NULL;
    }
}

}  // namespace

extern "C" {

int setWorkModeBasicSettings(db_handle_t* connection, int w_modeType) {
    return set_basic(connection, "UPDATE BasicSettings SET w_modeType = %d", w_modeType);
}

int autoswitchWorkModeBasicSettingsOff(db_handle_t* connection, int w_enableSwitch) {
    return set_basic(connection, "UPDATE BasicSettings SET w_enableSwitch = %d", w_enableSwitch);
}

int autoswitchWorkModeBasicSettingsOn(db_handle_t* connection, const char* w_switchTime, int w_switchModeType) {
    return set_basic(connection, "UPDATE BasicSettings SET w_enableSwitch=%d,w_switchTime = '%s',w_switchModeType = %d",
                     1, util_db::text_or_null(w_switchTime), w_switchModeType);
}

int insertWorkModeBasicSettings(db_handle_t* connection, int basicSettingType) {
    if (basicSettingType < 0) {
        return -1;
    }
    return set_basic(connection, "insert into BasicSettings (basicSettingType) VALUES(%d);", basicSettingType);
}

int timesettingBasicSettingsOff(db_handle_t* connection, const char* t_systemTime) {
    return set_basic(connection, "UPDATE BasicSettings SET t_systemTime = '%s'", util_db::text_or_null(t_systemTime));
}

int activateNtpBasicSettings(db_handle_t* connection, int t_activateNtp, const char* t_ntpIp) {
    return set_basic(connection, "UPDATE BasicSettings SET t_activateNtp = %d,t_ntpIp = '%s'",
                     t_activateNtp, util_db::text_or_null(t_ntpIp));
}

int setSyslogTurnBasicSettings(db_handle_t* connection, int l_syslogStorageType) {
    return set_basic(connection, "UPDATE BasicSettings SET l_syslogStorageType = %d", l_syslogStorageType);
}

int insertSyslogServerBasicSettings(db_handle_t* connection, const char* syslogIp, int sysProt, int syslogPort) {
    if (connection == NULL || syslogIp == NULL) {
        return -1;
    }
    const char* protocol = protocol_text(sysProt);
    if (protocol == NULL) {
        UTIL_DB_LOG(3, "%s", "error:insertSyslogServerBasicSettings\n");
        return -1;
    }
    Statement sql(connection);
    sql.format("select syslogId from Syslogs                 where syslogIp = '%s' &&                syslogProtocol = '%s' &&                syslogPort = %d;",
               syslogIp, protocol, syslogPort);
    Result res = util_db::store(connection, sql);
    if (!res) {
        return -1;
    }
    if (res.rows() > 0) {
        MYSQL_ROW row = res.fetch();
        if (row != NULL && row[0] != NULL) {
            /* The server exists: answer its id, insert nothing. */
            const int syslogId = atoi(row[0]);
            UTIL_DB_LOG(7, "syslogId is: %d\n", syslogId);
            return syslogId;
        }
    }
    res.reset();
    /* A new server: its id is not read back, the insert answers 0. */
    sql.format("insert into Syslogs (syslogIp,syslogProtocol,syslogPort) VALUES('%s','%s',%d);",
               syslogIp, protocol, syslogPort);
    return util_db::run(connection, sql);
}

int deleteSyslogServerBasicSettings(db_handle_t* connection, const char* syslogIp, int sysProt, int syslogPort) {
    if (syslogIp == NULL) {
        return -1;
    }
    Statement sql(connection);
    const char* protocol = protocol_text(sysProt);
    if (protocol != NULL) {
        /* Joined with "or": every server sharing the address, the protocol or
         * the port goes. */
        sql.format("delete from Syslogs where syslogIp = '%s' or syslogProtocol = '%s' or syslogPort = %d",
                   syslogIp, protocol, syslogPort);
    } else {
        UTIL_DB_LOG(3, "%s", "delete Fault,syslogProtocol\n");
    }
    /* An unknown protocol still hands over the empty buffer; the server
     * refuses it. A NULL connection is refused by db_query. */
    return util_db::run(connection, sql);
}

}  // extern "C"
