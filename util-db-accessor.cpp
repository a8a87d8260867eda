#include "util-db-accessor.h"

#include <stdlib.h>

namespace util_db {

int run_format(db_handle_t* handle, const char* fmt, ...) {
    Statement sql;
    va_list ap;
    va_start(ap, fmt);
    vsnprintf(sql.data(), Statement::kSize, fmt, ap);
    va_end(ap);
    return run(handle, sql.c_str());
}

MYSQL_ROW first_row(db_handle_t* handle, const char* sql, Result& res, const RowMessages& msgs, Need need) {
    res = store(handle, sql);
    if (!res) {
        return NULL;
    }
    if (res.rows() == 0) {
        log_error(msgs.empty);
        res.reset();
        return NULL;
    }
    MYSQL_ROW row = res.fetch();
    if (row == NULL || (need == Need::Value && row[0] == NULL)) {
        log_error(msgs.fetch);
        res.reset();
        return NULL;
    }
    return row;
}

int lookup_int(db_handle_t* handle, const char* sql, const RowMessages& msgs) {
    Result res;
    MYSQL_ROW row = first_row(handle, sql, res, msgs);
    if (row == NULL) {
        return -1;
    }
    return atoi(row[0]);
}

char* lookup_string(db_handle_t* handle, const char* sql, char* out, const RowMessages& msgs, Need need) {
    Result res;
    MYSQL_ROW row = first_row(handle, sql, res, msgs, need);
    if (row == NULL || row[0] == NULL || out == NULL) {
        return NULL; /* an SQL NULL or no buffer: nothing to copy into */
    }
    strcpy(out, row[0]);
    return out;
}

int dump_table(db_handle_t* handle, const char* table, int priority, Site site) {
    if (handle == NULL) {
        return -1;
    }
    Statement sql;
    sql.format("select * from %s", table);
    Result res = store(handle, sql.c_str());
    if (!res) {
        return -1;
    }
    UTIL_DB_LOG_AT(site, priority, "The total rows is: %d\n", res.rows_int());
    const unsigned int fields = res.fields();
    UTIL_DB_LOG_AT(site, priority, "The total fields is: %d\n", static_cast<int>(fields));
    while (MYSQL_ROW row = res.fetch()) {
        for (unsigned int i = 0; i < fields; ++i) {
            UTIL_DB_LOG_AT(site, priority, "%s\t", row[i]);
        }
        UTIL_DB_LOG_AT(site, priority, "\n");
    }
    return 0;
}

char* heap_copy(const char* src, size_t capacity) {
    char* buf = static_cast<char*>(util_db_malloc(capacity));
    if (buf != NULL) {
        copy_bounded(buf, src, capacity);
    }
    return buf;
}

}  // namespace util_db
