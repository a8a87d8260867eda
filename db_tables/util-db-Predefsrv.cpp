/*
 * util-db-Predefsrv.cpp - port rules of a service by name, predefined services
 * first.
 */
#include "util-db-Predefsrv.h"

#include <stdlib.h>
#include <string.h>

#include "util-db-accessor.h"

using util_db::Result;
using util_db::Statement;

namespace {

/* Size of the pname buffer of a rule. */
constexpr size_t kNameSize = 256;

/* Cells of the joined row (rule table first, then service table). */
enum JoinedCell : unsigned int {
    kMaxSrcPort = 3,
    kMinSrcPort = 4,
    kMaxDstPort = 5,
    kMinDstPort = 6,
    kServiceName = 14,
};

/* Runs one look-up of the rules of a service; the name counts as found only
 * when rows came back (an empty result set is freed at once). */
Result find_rules(db_handle_t* conn, const Statement& sql) {
    Result res = util_db::store(conn, sql);
    if (res && res.rows() == 0) {
        res.reset();
    }
    return res;
}

/* atoi of a port cell into *port; a NULL cell leaves it as it is. */
void read_port(const char* cell, int* port) {
    if (cell != NULL) {
        *port = atoi(cell);
    }
}

}  // namespace

extern "C" {

struct db_predefsrv_info* db_get_srv_info_by_name(db_handle_t* conn, char* name) {
    if (conn == NULL || name == NULL) {
        return NULL;
    }
    Statement sql(conn);
    sql.format("SELECT * FROM PredefineServerRules, PredefineServers where PredefineServerRules.serverId = PredefineServers.serverId and PredefineServers.name = '%s';", name);
    Result res = find_rules(conn, sql);
    if (!res) {
        sql.format("SELECT * FROM ServerRules, Servers where ServerRules.serverId = Servers.serverId and Servers.name = '%s';", name);
        res = find_rules(conn, sql);
    }
    if (!res) {
        return NULL;
    }

    /* A table laid out with fewer columns reads its missing cells as NULL. */
    const unsigned int fields = res.fields();
    struct db_predefsrv_info* head = NULL;
    struct db_predefsrv_info* prev = NULL;
    while (MYSQL_ROW row = res.fetch()) {
        auto cell = [&](unsigned int i) -> const char* { return i < fields ? row[i] : NULL; };
        auto* node = static_cast<struct db_predefsrv_info*>(util_db_malloc(sizeof(struct db_predefsrv_info)));
        if (node == NULL) {
            util_db::log_error("get memery db_predefsrv_info faild");
            db_free_predefsrv_info(head);
            return NULL;
        }
        if (prev == NULL) {
            head = node;
        }
        memset(node, 0, sizeof *node);
        if (const char* service = cell(kServiceName)) {
            node->pname = util_db::heap_copy(service, kNameSize);
            if (node->pname == NULL) {
                /* Past the first row this node is not linked yet and stays
                 * allocated (unless the profile frees it): a small loss on an
                 * out-of-memory path. */
                db_free_predefsrv_info(head);
                if (node != head) {
                    util_db::drop_unlinked(node, db_free_predefsrv_info);
                }
                return NULL;
            }
        }
        read_port(cell(kMinSrcPort), &node->minsport);
        read_port(cell(kMaxSrcPort), &node->maxsport);
        read_port(cell(kMinDstPort), &node->mindport);
        read_port(cell(kMaxDstPort), &node->maxdport);
        if (prev != NULL) {
            prev->next = node;
        }
        prev = node;
    }
    return head;
}

int db_free_predefsrv_info(struct db_predefsrv_info* info) {
    if (info == NULL) {
        return -1;
    }
    while (info != NULL) {
        struct db_predefsrv_info* next = info->next;
        if (info->pname != NULL) {
            free(info->pname);
        }
        free(info);
        info = next;
    }
    return 0;
}

}  /* extern "C" */
