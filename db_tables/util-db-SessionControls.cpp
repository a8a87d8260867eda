/*
 * util-db-SessionControls.cpp - find-or-create, update and delete of session
 * controls.
 *
 * The insert is a check, an insert and a read-back: three statements, no
 * transaction. The read-back matches the new row on every value written.
 */
#include "util-db-SessionControls.h"

#include <stdlib.h>

#include "util-db-accessor.h"

using util_db::Result;
using util_db::Statement;

extern "C" {

int insertSessionControls(db_handle_t* connection, int frequencyUpperLimit, int totalUpperLimit,
                          const char* sourceIp, const char* targetIp, int sessionType, const char* serviceApp,
                          int enableLog, int enableUpperLimitWarn) {
    if (connection == NULL || sourceIp == NULL || targetIp == NULL || serviceApp == NULL) {
        return -1;
    }
    Statement check(connection);
    Statement insert(connection);
    Statement readback(connection);

    check.format("select sessionControlId from SessionControls             where sourceIp = '%s' &&            targetIp = '%s' &&            sessionType = %d &&            serviceApp = '%s';", sourceIp, targetIp, sessionType, serviceApp);
    {
        Result res = util_db::store(connection, check);
        if (!res) {
            return -1;
        }
        if (res.rows() != 0) {
            /* Already there: its id, with its own limits and switches. */
            util_db::log_error("Data exist!\n");
            MYSQL_ROW row = res.fetch();
            if (row == NULL) {
                util_db::log_error("mysql_fetch_row() exec error!");
                return -1;
            }
            return atoi(row[0]);
        }
    }

    /* A limit is written when it is nonzero (a negative one too). */
    const bool frequency = frequencyUpperLimit != 0;
    const bool total = totalUpperLimit != 0;
    if (frequency && total) {
        insert.format("insert into SessionControls(frequencyUpperLimit,            totalUpperLimit,                sourceIp,                targetIp,                sessionType,                serviceApp,                enableLog,                enableUpperLimitWarn) VALUES(%d,%d,'%s','%s',%d,'%s',%d,%d);", frequencyUpperLimit, totalUpperLimit, sourceIp, targetIp, sessionType, serviceApp,
                      enableLog, enableUpperLimitWarn);
        readback.format("select sessionControlId from SessionControls                 where frequencyUpperLimit = %d &&                totalUpperLimit = %d &&                sourceIp = '%s' &&                targetIp = '%s' &&                sessionType = %d &&                serviceApp = '%s' &&                enableLog  = %d &&                enableUpperLimitWarn = %d;", frequencyUpperLimit, totalUpperLimit, sourceIp, targetIp, sessionType, serviceApp,
                        enableLog, enableUpperLimitWarn);
    } else if (total) {
        insert.format("insert into SessionControls(totalUpperLimit,            sourceIp,                targetIp,                sessionType,                serviceApp,                enableLog,                enableUpperLimitWarn) VALUES(%d,'%s','%s',%d,'%s',%d,%d);", totalUpperLimit, sourceIp, targetIp, sessionType, serviceApp, enableLog,
                      enableUpperLimitWarn);
        readback.format("select sessionControlId from SessionControls                 where totalUpperLimit = %d &&                sourceIp = '%s' &&                targetIp = '%s' &&                sessionType = %d &&                serviceApp = '%s' &&                enableLog  = %d &&                enableUpperLimitWarn = %d;", totalUpperLimit, sourceIp, targetIp, sessionType, serviceApp, enableLog,
                        enableUpperLimitWarn);
    } else if (frequency) {
        insert.format("insert into SessionControls(frequencyUpperLimit,            sourceIp,                targetIp,                sessionType,                serviceApp,                enableLog,                enableUpperLimitWarn) VALUES(%d,'%s','%s',%d,'%s',%d,%d);", frequencyUpperLimit, sourceIp, targetIp, sessionType, serviceApp, enableLog,
                      enableUpperLimitWarn);
        readback.format("select sessionControlId from SessionControls                 where frequencyUpperLimit = %d &&                sourceIp = '%s' &&                targetIp = '%s' &&                sessionType = %d &&                serviceApp = '%s' &&                enableLog  = %d &&                enableUpperLimitWarn = %d;", frequencyUpperLimit, sourceIp, targetIp, sessionType, serviceApp, enableLog,
                        enableUpperLimitWarn);
    } else {
        insert.format("insert into SessionControls(sourceIp,            targetIp,                sessionType,                serviceApp,                enableLog,                enableUpperLimitWarn) VALUES('%s','%s',%d,'%s',%d,%d);", sourceIp, targetIp, sessionType, serviceApp, enableLog, enableUpperLimitWarn);
        readback.format("select sessionControlId from SessionControls                 where sourceIp = '%s' &&                targetIp = '%s' &&                sessionType = %d &&                serviceApp = '%s' &&                enableLog  = %d &&                enableUpperLimitWarn = %d;", sourceIp, targetIp, sessionType, serviceApp, enableLog, enableUpperLimitWarn);
    }
    if (util_db::run(connection, insert) != 0) {
        return -1;
    }
    return util_db::lookup_int(connection, readback);
}

int deleteSessionControls(db_handle_t* connection, int sessionControlId) {
    if (connection == NULL) {
        return -1;
    }
    Statement sql(connection);
    sql.format("delete from SessionControls where             sessionControlId = %d;", sessionControlId);
    return util_db::run(connection, sql);
}

int updateSessionControls(db_handle_t* connection, int sessionControlId, int frequencyUpperLimit,
                          int totalUpperLimit, int enableLog, int enableUpperLimitWarn) {
    /* No test of the handle: db_query refuses a NULL one. */
    Statement sql(connection);
    if (frequencyUpperLimit == 0 && totalUpperLimit == 0) {
        sql.format("update SessionControls            set enableLog = %d,            enableUpperLimitWarn = %d            where sessionControlId = %d;", enableLog, enableUpperLimitWarn, sessionControlId);
    } else {
        sql.format("update SessionControls                set frequencyUpperLimit = %d,                totalUpperLimit = %d,                enableLog = %d,                enableUpperLimitWarn = %d                where sessionControlId = %d;", frequencyUpperLimit, totalUpperLimit, enableLog, enableUpperLimitWarn, sessionControlId);
    }
    if (util_db::run(connection, sql) != 0) {
        return -1;
    }
    return sessionControlId;
}

}  // extern "C"
