/*
 * util-db-DpiSubscriptions.cpp - ARP-spoof subscription switch and per-asset
 * protection properties.
 *
 * Assets are looked up by address; only the first matching row is used.
 * Empty results are never logged here, a row that can't be fetched is.
 */
#include "util-db-DpiSubscriptions.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "util-db-accessor.h"

using util_db::Result;
using util_db::Statement;

namespace {

const char* const kFetchError = "mysql_fetch_row() exec error!";

/* How the first row of a look-up came out. */
enum class Lookup {
    NoResult, /* the statement failed */
    NoRow,    /* empty result */
    NoFetch,  /* rows counted but none fetched */
    Found,
};

/* Runs a look-up and takes its first row into *row. A failed fetch is
 * logged when log_fetch is set. The result set stays in res. */
Lookup first_row(db_handle_t* connection, const util_db::StatementBase& sql, Result& res, MYSQL_ROW* row, bool log_fetch = true) {
    res = util_db::store(connection, sql);
    if (!res) {
        return Lookup::NoResult;
    }
    if (res.rows() == 0) {
        return Lookup::NoRow;
    }
    *row = res.fetch();
    if (*row == NULL) {
        if (log_fetch) {
            util_db::log_error(kFetchError);
        }
        return Lookup::NoFetch;
    }
    return Lookup::Found;
}

/* atoi of a cell; a NULL cell counts as 0. */
int cell_int(const char* cell) { return cell != NULL ? atoi(cell) : 0; }

/* Copies a cell into a 128-character field, cut to fit and terminated
 * (a NULL cell gives an empty text). */
void copy_field(char (&field)[128], const char* cell) {
    snprintf(field, sizeof field, "%s", cell != NULL ? cell : "");
}

/* Formats the asset look-up by address (mac before ip when both are given).
 * false, after logging, when neither is given. */
bool format_address_lookup(Statement& sql, const char* ip, const char* mac) {
    if (ip != NULL && mac != NULL) {
        sql.format("select assetId from Assets where macAddress = '%s' and ipAddress = '%s'", mac, ip);
    } else if (mac != NULL) {
        sql.format("select assetId from Assets where macAddress = '%s'", mac);
    } else if (ip != NULL) {
        sql.format("select assetId from Assets where ipAddress = '%s'", ip);
    } else {
        util_db::log_error("input information error,please input again!\n");
        return false;
    }
    return true;
}

void fill_asset(asset_info_t* e, MYSQL_ROW row) {
    copy_field(e->ipAddress, row[0]);
    copy_field(e->macAddress, row[1]);
}

void fill_interface(asset_intface_t* e, MYSQL_ROW row) { copy_field(e->interfaceName, row[0]); }

/*
 * Runs a select and hands its rows over as one heap array of as many
 * elements as the result has rows; returns the number filled, -1 when there
 * is no result set or no row. The array's address is stored through `out`
 * before the rows are read; with no room to store it (out NULL) or no memory
 * for the array, nothing is stored and -1 is returned.
 */
template <typename Elem, void (*kFill)(Elem*, MYSQL_ROW)>
int read_array(db_handle_t* connection, const util_db::StatementBase& sql, Elem** out) {
    Result res = util_db::store(connection, sql);
    if (!res) {
        return -1;
    }
    const my_ulonglong rows = res.rows();
    if (rows == 0 || out == NULL) {
        return -1;
    }
    Elem* array = static_cast<Elem*>(util_db_malloc(static_cast<size_t>(rows) * sizeof(Elem)));
    if (array == NULL) {
        return -1;
    }
    *out = array;
    my_ulonglong filled = 0;
    while (filled < rows) {
        MYSQL_ROW row = res.fetch();
        if (row == NULL) {
            break;
        }
        kFill(&array[filled], row);
        ++filled;
    }
    return static_cast<int>(filled);
}

}  // namespace

extern "C" {

int set_arpspoof_status(db_handle_t* connection, int type, int status) {
    if (connection == NULL || type < 0 || status < 0) {
        return -1;
    }
    Statement sql(connection);
    sql.format("UPDATE DpiSubscriptions SET subscriptionStatus = %d WHERE subscriptionType = %d;", status, type);
    return util_db::run(connection, sql);
}

int get_arpspoof_status(db_handle_t* connection, int type) {
    if (connection == NULL || type < 0) {
        return -1;
    }
    Statement sql(connection);
    sql.format("SELECT subscriptionStatus from DpiSubscriptions where subscriptionType = %d;", type);
    Result res;
    MYSQL_ROW row = NULL;
    if (first_row(connection, sql, res, &row) != Lookup::Found) {
        return -1;
    }
    return cell_int(row[0]);
}

int set_ipmac_asset_status(db_handle_t* connection, const char* ip, const char* mac, int assetId, int type,
                           int action) {
    (void)assetId;
    if (connection == NULL || ip == NULL || mac == NULL) {
        return -1;
    }
    Statement sql(connection);
    sql.format("SELECT assetId from Assets WHERE ipAddress= '%s' AND macAddress = '%s';", ip, mac);
    Result res;
    MYSQL_ROW row = NULL;
    if (first_row(connection, sql, res, &row) != Lookup::Found) {
        return -1;
    }
    const int id = cell_int(row[0]);
    res.reset();
    sql.format("UPDATE AssetProperties SET assetPropertyIntValue=%d, assetPropertyStatus=0 WHERE assetId=%d AND assetPropertyType=%d;", action, id, type);
    return util_db::run(connection, sql);
}

int get_ipmac_asset_info(db_handle_t* connection, int type, asset_info_t** asset_information) {
    if (connection == NULL || type < 0) {
        return -1;
    }
    Statement sql(connection);
    sql.format("SELECT at.ipAddress, at.macAddress FROM AssetProperties ap, Assets at WHERE ap.assetPropertyType=%d AND at.assetId=ap.assetId;", type);
    return read_array<asset_info_t, fill_asset>(connection, sql, asset_information);
}

int ipmac_asset_free(db_handle_t* connection, asset_info_t* asset_information) {
    (void)connection;
    free(asset_information);
    return 0;
}

int get_interfaces_by_devinfo(db_handle_t* connection, const char* ip, const char* mac, asset_intface_t** ifnames) {
    if (connection == NULL || ip == NULL || mac == NULL) {
        return -1;
    }
    Statement sql(connection);
    sql.format("SELECT sf.interfaceName from Assets at, SecurityAreas sa, SecurityAreaInterfaces sf WHERE at.ipAddress='%s' AND at.macAddress='%s' AND at.securityAreaName=sa.name AND sa.enable=1 AND sa.securityAreaId=sf.securityAreaId;", ip, mac);
    return read_array<asset_intface_t, fill_interface>(connection, sql, ifnames);
}

int devinfo_interfaces_free(db_handle_t* connection, asset_intface_t* ifnames) {
    (void)connection;
    free(ifnames);
    return 0;
}

int set_ipmac_asset_info(db_handle_t* connection, const char* ip, const char* mac, int assetId, int type,
                         int status, int value) {
    (void)assetId;
    if (connection == NULL) {
        return -1;
    }
    Statement sql(connection);
    if (!format_address_lookup(sql, ip, mac)) {
        return -1;
    }
    Result res;
    MYSQL_ROW row = NULL;
    const Lookup found = first_row(connection, sql, res, &row);
    if (found == Lookup::NoResult) {
        return -1;
    }
    if (found == Lookup::Found) {
        const int id = cell_int(row[0]);
        res.reset();
        sql.format("insert into AssetProperties(assetId,assetPropertyType,assetPropertyStatus,assetPropertyIntValue) VALUES (%d,%d,%d,%d);", id, type, status, value);
        util_db::run(connection, sql);
    }
    /* Once the look-up has run, the outcome is 0 whatever followed. */
    return 0;
}

int clear_asset_info(db_handle_t* connection, const char* ip, const char* mac, int assetId) {
    if (connection == NULL) {
        return -1;
    }
    Statement sql(connection);
    if (assetId >= 1) {
        sql.format("delete from AssetProperties where assetId = %d", assetId);
    } else {
        if (!format_address_lookup(sql, ip, mac)) {
            return -1;
        }
        Result res;
        MYSQL_ROW row = NULL;
        const Lookup found = first_row(connection, sql, res, &row);
        if (found == Lookup::NoResult) {
            return -1;
        }
        if (found == Lookup::Found) {
            sql.format("delete from AssetProperties where assetId = %d", cell_int(row[0]));
        }
        /* Otherwise the buffer keeps the look-up, which is run again below:
         * its status becomes the result. */
    }
    if (sql.empty()) {
        return -1;
    }
    return util_db::run(connection, sql);
}

int get_mac_by_ip(db_handle_t* connection, const char* ip, char* mac) {
    if (connection == NULL || ip == NULL || mac == NULL) {
        return -1;
    }
    Statement sql(connection);
    sql.format("SELECT macAddress from Assets where ipAddress='%s';", ip);
    Result res;
    MYSQL_ROW row = NULL;
    if (first_row(connection, sql, res, &row, false) != Lookup::Found || row[0] == NULL) {
        return -1;
    }
    strcpy(mac, row[0]);
    return 0;
}

}  // extern "C"
