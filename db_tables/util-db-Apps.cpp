/*
 * util-db-Apps.cpp - application definitions (Apps) and their traits (Traits).
 *
 * The add and update statements are assembled piece by piece from the record
 * fields that are present; the getters turn the rows into singly linked lists
 * of heap records with fixed-capacity string buffers.
 */
#include "util-db-Apps.h"

#include <stdlib.h>
#include <string.h>

#include "util-db-accessor.h"

using util_db::Result;
using util_db::Site;
using util_db::Statement;

namespace {

constexpr size_t kFieldCapacity = 256;  /* every string field but desc */
constexpr size_t kDescCapacity = 1024;  /* desc */

/* Traces a change statement with this module's path and line of the call, then runs it. */
int run_traced(db_handle_t* conn, const Statement& sql, Site site) {
    UTIL_DB_LOG_AT(site, 7, "mysql cmd: %s (%s:%d)\n", sql.c_str(), site.file, site.line);
    return util_db::run(conn, sql);
}

/* The type and inherit values that count as given. */
bool type_given(int type) { return type >= 0 && type <= 5; }
bool inherit_given(int inherit) { return inherit == 0 || inherit == 1; }

/* Cell i of a row of n fields; NULL when SQL NULL or beyond the row. */
const char* cell(MYSQL_ROW row, unsigned int n, unsigned int i) { return i < n ? row[i] : NULL; }

/* Copies a non-NULL cell into a fresh buffer of `capacity` bytes. false only
 * when that buffer can't be allocated. */
bool take(char** field, const char* value, size_t capacity) {
    if (value == NULL) {
        return true;
    }
    *field = util_db::heap_copy(value, capacity);
    return *field != NULL;
}

bool fill_app(db_app_info* rec, MYSQL_ROW row, unsigned int n) {
    if (const char* v = cell(row, n, 0)) {
        rec->appid = atoi(v);
    }
    if (!take(&rec->pname, cell(row, n, 1), kFieldCapacity)) {
        return false;
    }
    if (const char* v = cell(row, n, 2)) {
        rec->type = atoi(v);
    }
    if (!take(&rec->sport, cell(row, n, 3), kFieldCapacity) || !take(&rec->cport, cell(row, n, 4), kFieldCapacity)) {
        return false;
    }
    if (const char* v = cell(row, n, 5)) {
        rec->inherit = atoi(v);
    }
    return take(&rec->ppdname, cell(row, n, 6), kFieldCapacity) && take(&rec->desc, cell(row, n, 7), kDescCapacity);
}

bool fill_trait(db_trait_info* rec, MYSQL_ROW row, unsigned int n) {
    if (const char* v = cell(row, n, 0)) {
        rec->traitid = atoi(v);
    }
    if (const char* v = cell(row, n, 1)) {
        rec->appid = atoi(v);
    }
    return take(&rec->toffset, cell(row, n, 2), kFieldCapacity) && take(&rec->trait, cell(row, n, 3), kFieldCapacity) &&
           take(&rec->depth, cell(row, n, 4), kFieldCapacity);
}

/*
 * Reads the rows of a select into a list, in row order.
 *
 * A record is linked behind its predecessor only once all its fields are
 * filled. The first record becomes the head either as soon as it is allocated
 * (kHeadAtOnce) or, like the others, once filled. When a string buffer can't
 * be allocated, the list from the head is released and the record being
 * filled is dropped (left allocated unless it already is the head, or the
 * profile frees it).
 */
template <typename Rec, bool kHeadAtOnce, bool (*kFill)(Rec*, MYSQL_ROW, unsigned int), int (*kRelease)(Rec*)>
Rec* read_list(db_handle_t* conn, const util_db::StatementBase& sql) {
    Result res = util_db::store(conn, sql);
    if (!res || res.rows() == 0) {
        return NULL;
    }
    const unsigned int n = res.fields();
    Rec* head = NULL;
    Rec* tail = NULL;
    while (MYSQL_ROW row = res.fetch()) {
        Rec* rec = static_cast<Rec*>(util_db_malloc(sizeof(Rec)));
        if (rec == NULL) {
            util_db::log_error("get memery db_app_info faild");
            kRelease(head);
            return NULL;
        }
        memset(rec, 0, sizeof(Rec));
        if (kHeadAtOnce && head == NULL) {
            head = rec;
        }
        if (!kFill(rec, row, n)) {
            kRelease(head);
            if (rec != head) {
                util_db::drop_unlinked(rec, kRelease);
            }
            return NULL;
        }
        if (head == NULL) {
            head = rec;
        } else if (rec != head) {
            tail->next = rec;
        }
        tail = rec;
    }
    return head;
}

}  // namespace

extern "C" {

int db_add_app(db_handle_t* conn, const db_app_info* info) {
    if (conn == NULL || info == NULL || info->pname == NULL) {
        return -1;
    }
    Statement columns(conn);
    Statement values(columns);
    columns.format("insert into Apps(name, inherit");
    values.format("VALUES('%s', %d", info->pname, info->inherit);
    if (type_given(info->type)) {
        columns.append(", type");
        values.append(", '%d'", info->type);
    }
    if (info->sport != NULL) {
        columns.append(", serverPort");
        values.append(", '%s'", info->sport);
    }
    if (info->cport != NULL) {
        columns.append(", clientPort");
        values.append(", '%s'", info->cport);
    }
    if (info->ppdname != NULL) {
        columns.append(", predefineName");
        values.append(", '%s'", info->ppdname);
    }
    if (info->desc != NULL) {
        columns.append(", description");
        values.append(", '%s'", info->desc);
    }
    columns.append(") %s);", values.c_str());
    return run_traced(conn, columns, UTIL_DB_HERE);
}

int db_del_app_by_name(db_handle_t* conn, const char* name) {
    if (conn == NULL || name == NULL) {
        return -1;
    }
    Statement sql(conn);
    sql.format("delete from Apps where name = '%s'", name);
    return run_traced(conn, sql, UTIL_DB_HERE);
}

int db_update_app_by_name(db_handle_t* conn, const db_app_info* info) {
    if (conn == NULL || info == NULL || info->pname == NULL) {
        return -1;
    }
    Statement sql(conn);
    sql.format("update Apps set");
    bool any = false;
    /* Each clause after the first is preceded by a comma. */
    auto next = [&]() {
        if (any) {
            sql.append(",");
        }
        any = true;
    };
    if (type_given(info->type)) {
        next();
        sql.append(" type = %d", info->type);
    }
    if (info->sport != NULL) {
        next();
        sql.append(" serverPort = '%s'", info->sport);
    }
    if (info->cport != NULL) {
        next();
        sql.append(" clientPort = '%s'", info->cport);
    }
    if (inherit_given(info->inherit)) {
        next();
        sql.append(" inherit = %d", info->inherit);
    }
    if (info->ppdname != NULL) {
        next();
        sql.append(" predefineName = '%s'", info->ppdname);
    }
    if (info->desc != NULL) {
        next();
        sql.append(" description = '%s'", info->desc);
    }
    sql.append(" where name = '%s';", info->pname);
    return run_traced(conn, sql, UTIL_DB_HERE);
}

int db_free_app_info(db_app_info* info) {
    if (info == NULL) {
        return -1;
    }
    while (info != NULL) {
        db_app_info* next = info->next;
        free(info->pname);
        free(info->sport);
        free(info->cport);
        free(info->ppdname);
        free(info->desc);
        free(info);
        info = next;
    }
    return 0;
}

db_app_info* db_get_app_info_by_name(db_handle_t* conn, const char* name) {
    if (conn == NULL || name == NULL) {
        return NULL;
    }
    Statement sql(conn);
    sql.format("select * from Apps where name= '%s';", name);
    return read_list<db_app_info, true, fill_app, db_free_app_info>(conn, sql);
}

int db_add_trait(db_handle_t* conn, const db_trait_info* info) {
    if (conn == NULL || info == NULL || info->appid < 1) {
        return -1;
    }
    Statement columns(conn);
    Statement values(columns);
    columns.format("insert into Traits (appId");
    values.format("VALUES(%d", info->appid);
    if (info->toffset != NULL) {
        columns.append(", toffset");
        values.append(", '%s'", info->toffset);
    }
    if (info->trait != NULL) {
        columns.append(", trait");
        values.append(", '%s'", info->trait);
    }
    if (info->depth != NULL) {
        columns.append(", depth");
        values.append(", '%s'", info->depth);
    }
    columns.append(")");
    values.append(");");
    columns.append(" %s", values.c_str());
    return run_traced(conn, columns, UTIL_DB_HERE);
}

int db_del_trait_by_appid(db_handle_t* conn, int appid) {
    if (conn == NULL) {
        return -1;
    }
    Statement sql(conn);
    sql.format("delete from Traits where appId = %d;", appid);
    return run_traced(conn, sql, UTIL_DB_HERE);
}

int db_update_traitby_appid(db_handle_t* conn, const db_trait_info* info) {
    if (conn == NULL || info == NULL || info->appid == 0) {
        return -1;
    }
    Statement sql(conn);
    sql.format("update Traits set");
    bool any = false;
    auto next = [&]() {
        if (any) {
            sql.append(",");
        }
        any = true;
    };
    /* The values are SQL as the caller wrote it: no quotes added. */
    if (info->toffset != NULL) {
        next();
        sql.append(" toffset = %s", sql.literal(info->toffset));
    }
    if (info->trait != NULL) {
        next();
        sql.append(" trait = %s", sql.literal(info->trait));
    }
    if (info->depth != NULL) {
        next();
        sql.append(" depth = %s", sql.literal(info->depth));
    }
    sql.append(" where appId = %d;", info->appid);
    return run_traced(conn, sql, UTIL_DB_HERE);
}

int db_free_trait_info(db_trait_info* info) {
    if (info == NULL) {
        return -1;
    }
    while (info != NULL) {
        db_trait_info* next = info->next;
        free(info->toffset);
        free(info->trait);
        free(info->depth);
        free(info);
        info = next;
    }
    return 0;
}

db_trait_info* db_get_trait_info_by_appid(db_handle_t* conn, int appid) {
    if (conn == NULL || appid == 0) {
        return NULL;
    }
    Statement sql(conn);
    sql.format("select * from Traits where appId = %d;", appid);
    return read_list<db_trait_info, false, fill_trait, db_free_trait_info>(conn, sql);
}

}  // extern "C"
