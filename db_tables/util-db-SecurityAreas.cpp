/*
 * util-db-SecurityAreas.cpp - security zones, their member interfaces and the
 * look-ups that turn a zone into its interface list or its address list.
 */
#include "util-db-SecurityAreas.h"

#include <stdarg.h>
#include <stdlib.h>
#include <string.h>

#include "util-db-accessor.h"

using util_db::Need;
using util_db::Result;
using util_db::RowMessages;
using util_db::Statement;

namespace {

constexpr RowMessages kZoneIdMessagesLf = {"mysql_num_rows(), data is empty or error!\n",
                                           "mysql_fetch_row() exec error!\n"};
constexpr RowMessages kMemberZoneMessages = {"03:mysql_num_rows(), data is empty or error!",
                                             "04:mysql_fetch_row() exec error!"};
constexpr RowMessages kZoneNameMessages = {"07:mysql_num_rows(), data is empty or error!",
                                           "08:mysql_fetch_row() exec error!"};
constexpr RowMessages kAddressZoneMessages = {"03:mysql_num_rows(), data is empty or error!\n",
                                              "04:mysql_fetch_row() exec error!\n"};
constexpr RowMessages kPoolAddressMessages = {"10:mysql_num_rows(), ipAddress is empty or error!\n",
                                              "11:mysql_fetch_row() exec error!\n"};

/* Ids are read back as text; a NULL cell reads as 0. */
int cell_int(const char* cell) { return cell != NULL ? atoi(cell) : 0; }

void format_zone_id_lookup(Statement& sql, const char* name) {
    sql.format("select securityAreaId from SecurityAreas where name= '%s';", name);
}

/*
 * The id of zone `name` into *id; false when the look-up fails or finds no
 * row (msgs logged). With a nonzero trace priority the id is traced as the
 * database returned it.
 */
bool zone_id(db_handle_t* connection, const char* name, const RowMessages& msgs, int trace_priority, int* id) {
    Statement sql(connection);
    format_zone_id_lookup(sql, name);
    Result res;
    MYSQL_ROW row = util_db::first_row(connection, sql, res, msgs);
    if (row == NULL) {
        return false;
    }
    if (trace_priority != 0) {
        UTIL_DB_LOG(trace_priority, "%s\t\n", row[0]);
    }
    *id = cell_int(row[0]);
    return true;
}

/*
 * The zone's address list in the caller's buffer. Each piece goes to the
 * cursor, bounded by the buffer length minus the text already in the buffer;
 * the cursor then advances by the piece's full length. Nothing is ever
 * written at or past the buffer's end (a cut piece leaves the cursor there).
 * A negative length sets no bound at all: the caller vouches for its buffer,
 * which is written as one large enough for the whole list.
 */
class AddressList {
public:
    AddressList(char* buf, int len) : buf_(buf), len_(len), cursor_(0) {}

    bool empty() const { return buf_[0] == '\0'; }

    void clear() { buf_[0] = '\0'; }

    void append(const char* fmt, ...) __attribute__((format(printf, 2, 3))) {
        const long long limit = static_cast<long long>(len_) - static_cast<long long>(strlen(buf_));
        const long long room = static_cast<long long>(len_) - cursor_;
        const long long bound = limit < room ? limit : room;
        va_list ap;
        va_start(ap, fmt);
        int n;
        if (len_ < 0) {
            va_list again;
            va_copy(again, ap);
            n = vsnprintf(NULL, 0, fmt, again);
            va_end(again);
            if (n >= 0) {
                vsnprintf(buf_ + cursor_, static_cast<size_t>(n) + 1, fmt, ap);
            }
        } else {
            n = bound > 0 ? vsnprintf(buf_ + cursor_, static_cast<size_t>(bound), fmt, ap)
                          : vsnprintf(NULL, 0, fmt, ap);
        }
        va_end(ap);
        if (n > 0) {
            cursor_ += n;
        }
    }

private:
    char* buf_;
    int len_;
    long long cursor_;
};

/*
 * Appends the first enabled pool address of each member interface, and stops
 * at the first member without one (the members after it are not looked at).
 */
void append_member_pools(db_handle_t* connection, Statement& sql, Result& members, AddressList& list) {
    int count = 0;
    while (MYSQL_ROW member = members.fetch()) {
        if (member[0] == NULL) {
            util_db::log_error("07:mysql_fetch_row() exec error!\n");
            return;
        }
        UTIL_DB_LOG(7, "intFaceName[%d]->interfaceName:%s\n", count, member[0]);
        sql.format("select ipAddress from AddressPools where interfaceName= '%s' and enable = 1;", member[0]);
        Result pool;
        MYSQL_ROW address = util_db::first_row(connection, sql, pool, kPoolAddressMessages, Need::Value);
        if (address == NULL) {
            return;
        }
        UTIL_DB_LOG(7, "ipAddress = %s\n", address[0]);
        if (count != 0) {
            list.append(",");
        }
        list.append("%s", address[0]);
        ++count;
    }
}

/* Appends every enabled asset address of the zone; the separator depends on
 * what the buffer already holds. */
void append_zone_assets(db_handle_t* connection, Statement& sql, const char* name, AddressList& list) {
    sql.format("select ipAddress from Assets where securityAreaName = '%s' and enable = 1;", name);
    Result assets = util_db::store(connection, sql);
    if (!assets) {
        return;
    }
    if (assets.rows() == 0) {
        util_db::log_error("10:mysql_num_rows(), ipAddress is empty or error!\n");
        return;
    }
    while (MYSQL_ROW row = assets.fetch()) {
        if (row[0] == NULL) {
            util_db::log_error("11:mysql_fetch_row() exec error!\n");
            return;
        }
        UTIL_DB_LOG(7, "ipAddress = %s\n", row[0]);
        if (!list.empty()) {
            list.append(",");
        }
        list.append("%s", row[0]);
    }
}

}  // namespace

/* ---- Zones and their member interfaces ---- */

int insertSecurityAreas(db_handle_t* connection, char* name) {
    if (connection == NULL || name == NULL) {
        return -1;
    }
    Statement sql(connection);
    format_zone_id_lookup(sql, name);
    UTIL_DB_LOG(7, "mysql cmd: %s\n", sql.c_str());
    {
        Result existing = util_db::store(connection, sql);
        if (!existing) {
            return -1;
        }
        if (existing.rows() > 0) {
            util_db::log_error("mysql_num_rows():data is exist,please check the para that you input!\n");
            return -1;
        }
    }
    sql.format("insert into SecurityAreas (name) VALUES('%s');", name);
    return util_db::run(connection, sql);
}

int deleteSecurityAreas(db_handle_t* connection, char* name) {
    if (connection == NULL || name == NULL) {
        return -1;
    }
    int id = 0;
    if (!zone_id(connection, name, kZoneIdMessagesLf, 3, &id)) {
        return -1;
    }
    Statement sql(connection);
    sql.format("delete from SecurityAreaInterfaces where securityAreaId = %d;", id);
    if (util_db::run(connection, sql) != 0) {
        return -1;
    }
    sql.format("delete from SecurityAreas where name = '%s';", name);
    return util_db::run(connection, sql);
}

int updateSecurityAreas(db_handle_t* connection, char* name, int enable) {
    if (connection == NULL || name == NULL) {
        return -1;
    }
    Statement sql(connection);
    sql.format("UPDATE SecurityAreas SET enable = %d WHERE name = '%s';", enable, name);
    UTIL_DB_LOG(7, "mysql cmd: %s\n", sql.c_str());
    return util_db::run(connection, sql);
}

int insertMainFrame(db_handle_t* connection, char* name, char* interfaceName) {
    if (connection == NULL || name == NULL || interfaceName == NULL) {
        return -1;
    }
    int id = 0;
    if (!zone_id(connection, name, util_db::kRowMessages, 0, &id)) {
        return -1;
    }
    Statement sql(connection);
    sql.format("insert into SecurityAreaInterfaces(securityAreaId,interfaceName) VALUES(%d,'%s');", id,
               interfaceName);
    return util_db::run(connection, sql);
}

int deleteMainFrame(db_handle_t* connection, char* name) {
    if (connection == NULL || name == NULL) {
        return -1;
    }
    int id = 0;
    if (!zone_id(connection, name, util_db::kRowMessages, 7, &id)) {
        return -1;
    }
    Statement sql(connection);
    sql.format("delete from SecurityAreaInterfaces where securityAreaId = %d;", id);
    return util_db::run(connection, sql);
}

/* ---- Zone look-ups ---- */

char* select_name_by_interfacename_SA(db_handle_t* connection, char* interfaceName, char* ret_str) {
    if (connection == NULL || interfaceName == NULL) {
        return NULL;
    }
    Statement sql(connection);
    sql.format("select securityAreaId from SecurityAreaInterfaces where interfaceName= '%s';", interfaceName);
    Result res;
    MYSQL_ROW row = util_db::first_row(connection, sql, res, kMemberZoneMessages);
    if (row == NULL) {
        return NULL;
    }
    const int id = cell_int(row[0]);
    res.reset();
    sql.format("select name from SecurityAreas where securityAreaId= %d;", id);
    row = util_db::first_row(connection, sql, res, kZoneNameMessages, Need::Value);
    if (row == NULL) {
        return NULL;
    }
    /* Unbounded copy: the caller's buffer holds the longest zone name. */
    if (ret_str != NULL) {
        strcpy(ret_str, row[0]);
    }
    UTIL_DB_LOG(7, "name:%s\n", row[0]);
    return ret_str;
}

int selectInterfaceInfoByNameSA(db_handle_t* connection, char* name, char* ret_val, int ret_len) {
    if (connection == NULL || name == NULL || ret_val == NULL || ret_len <= 0) {
        return -1;
    }
    int id = 0;
    if (!zone_id(connection, name, kZoneIdMessagesLf, 0, &id)) {
        return -1;
    }
    Statement sql(connection);
    sql.format("select interfaceName from SecurityAreaInterfaces where securityAreaId= %d;", id);
    Result members = util_db::store(connection, sql);
    if (!members) {
        return -1;
    }
    if (members.rows() == 0) {
        util_db::log_error("mysql_num_rows(), data is empty or error!");
        return -1;
    }
    /* A cut name leaves the cursor at or past the end: the rest is counted,
     * not written. */
    util_db::Appender out(ret_val, static_cast<size_t>(ret_len));
    int i = 0;
    while (MYSQL_ROW row = members.fetch()) {
        UTIL_DB_LOG(7, "intFaceName[%d]->interfaceName:%s\n", i, row[0]);
        if (i > 0) {
            out.append(",");
        }
        out.append("%s", row[0]);
        ++i;
    }
    /* The member list is not freed on success (only the failure paths free
     * it); callers have always lived with that. */
    members.abandon();
    return i;
}

char* selectIpaddressInfoByNameSA(db_handle_t* connection, char* name, char* ret_str, int ret_len) {
    if (connection == NULL || name == NULL || ret_str == NULL || ret_len == 0) {
        return NULL;
    }
    AddressList list(ret_str, ret_len);
    Statement sql(connection);
    sql.format("select securityAreaId from SecurityAreas where name = '%s';", name);
    int id = 0;
    {
        Result zone;
        MYSQL_ROW row = util_db::first_row(connection, sql, zone, kAddressZoneMessages);
        if (row == NULL) {
            return NULL;
        }
        id = cell_int(row[0]);
        UTIL_DB_LOG(3, "securityAreaId: %d\n", id);
    }

    sql.format("select interfaceName from SecurityAreaInterfaces where securityAreaId= %d;", id);
    {
        Result members = util_db::store(connection, sql);
        if (members) {
            /* A zone without members has no address list at all, not even
             * "any", whatever assets name it. */
            if (members.rows() == 0) {
                util_db::log_error("07:mysql_num_rows(), data is empty or error!");
                return NULL;
            }
            list.clear();
            append_member_pools(connection, sql, members, list);
        }
        /* When the member list could not be read, the buffer is not cleared:
         * the asset addresses go over its start. */
    }

    append_zone_assets(connection, sql, name, list);

    if (list.empty()) {
        list.append("any");
    }
    UTIL_DB_LOG(7, "mysql return address: %s\n", ret_str);
    return ret_str;
}

int util_db_query_commonSecurityAreas(db_handle_t* connection) {
    return util_db::dump_table(connection, "SecurityAreas", 7, UTIL_DB_HERE);
}

int util_db_query_commonSecurityAreaInterfaces(db_handle_t* connection) {
    return util_db::dump_table(connection, "SecurityAreaInterfaces", 7, UTIL_DB_HERE);
}
