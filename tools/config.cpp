// util-db: whole-configuration operations (see config.h).
#include "config.h"

#include <stdio.h>
#include <stdlib.h>

#include <algorithm>
#include <cctype>
#include <fstream>
#include <iostream>
#include <memory>
#include <optional>
#include <set>
#include <sstream>

namespace config {

namespace {

using Cell = std::optional<std::string>;

// A result set read whole: column names, whether each holds integers, rows.
struct Rows {
    std::vector<std::string> columns;
    std::vector<bool> integer;
    std::vector<std::vector<Cell>> rows;
};

std::string quote_name(const std::string& name) { return "`" + name + "`"; }

Status run(MYSQL* conn, const std::string& sql, Rows* out = nullptr) {
    if (mysql_real_query(conn, sql.data(), sql.size()) != 0) {
        return Status::fail(1, mysql_error(conn));
    }
    MYSQL_RES* res = mysql_store_result(conn);
    if (res == nullptr) {
        if (mysql_field_count(conn) != 0) {
            return Status::fail(1, mysql_error(conn));
        }
        return Status::ok();
    }
    std::unique_ptr<MYSQL_RES, void (*)(MYSQL_RES*)> guard(res, mysql_free_result);
    if (out == nullptr) {
        return Status::ok();
    }
    const unsigned n = mysql_num_fields(res);
    const MYSQL_FIELD* fields = mysql_fetch_fields(res);
    for (unsigned i = 0; i < n; ++i) {
        out->columns.emplace_back(fields[i].name);
        const enum_field_types t = fields[i].type;
        out->integer.push_back(t == MYSQL_TYPE_TINY || t == MYSQL_TYPE_SHORT || t == MYSQL_TYPE_LONG ||
                               t == MYSQL_TYPE_LONGLONG || t == MYSQL_TYPE_INT24 || t == MYSQL_TYPE_YEAR);
    }
    while (MYSQL_ROW row = mysql_fetch_row(res)) {
        const unsigned long* len = mysql_fetch_lengths(res);
        std::vector<Cell> cells;
        for (unsigned i = 0; i < n; ++i) {
            cells.push_back(row[i] ? Cell(std::string(row[i], len[i])) : std::nullopt);
        }
        out->rows.push_back(std::move(cells));
    }
    return Status::ok();
}

Json cell_json(const Cell& c, bool integer) {
    if (!c) {
        return nullptr;
    }
    if (integer) {
        if (!c->empty() && (*c)[0] == '-') {
            return strtoll(c->c_str(), nullptr, 10);
        }
        return strtoull(c->c_str(), nullptr, 10);
    }
    return *c;
}

Json row_json(const Rows& r, size_t k) {
    Json row = Json::object();
    for (size_t i = 0; i < r.columns.size(); ++i) {
        row[r.columns[i]] = cell_json(r.rows[k][i], r.integer[i]);
    }
    return row;
}

Status read_table(MYSQL* conn, const std::string& name, const Table& t, Rows* rows) {
    std::string order;
    for (const std::string& c : t.key.empty() ? t.columns : t.key) {
        order += (order.empty() ? "" : ",") + quote_name(c);
    }
    const Status s = run(conn, "SELECT * FROM " + quote_name(name) + " ORDER BY " + order, rows);
    return s.code ? Status::fail(1, "table " + name + ": " + s.reason) : s;
}

// How a row is named in messages: its key columns, "col=value" joined by ",".
std::string key_text(const Table& t, const Json& row) {
    std::string out;
    for (const std::string& c : t.key.empty() ? t.columns : t.key) {
        out += (out.empty() ? "" : ",") + c + "=" + (row.contains(c) ? row[c].dump() : "?");
    }
    return out;
}

std::string dump_text(const Json& doc) { return doc.dump(2, ' ', false, Json::error_handler_t::replace) + "\n"; }

}  // namespace

std::string read_input(const std::string& path, bool* ok) {
    std::stringstream ss;
    if (path == "-") {
        ss << std::cin.rdbuf();
        *ok = true;
    } else {
        std::ifstream in(path, std::ios::binary);
        *ok = static_cast<bool>(in);
        ss << in.rdbuf();
    }
    return ss.str();
}

Status read_schema(MYSQL* conn, Schema* schema) {
    Rows cols;
    Rows keys;
    Status s = run(conn,
                   "SELECT c.TABLE_NAME, c.COLUMN_NAME FROM information_schema.COLUMNS c "
                   "JOIN information_schema.TABLES t ON t.TABLE_SCHEMA = c.TABLE_SCHEMA AND t.TABLE_NAME = c.TABLE_NAME "
                   "WHERE c.TABLE_SCHEMA = DATABASE() AND t.TABLE_TYPE = 'BASE TABLE' "
                   "ORDER BY c.TABLE_NAME, c.ORDINAL_POSITION",
                   &cols);
    if (s.code == 0) {
        s = run(conn,
                "SELECT TABLE_NAME, COLUMN_NAME FROM information_schema.STATISTICS "
                "WHERE TABLE_SCHEMA = DATABASE() AND INDEX_NAME = 'PRIMARY' ORDER BY TABLE_NAME, SEQ_IN_INDEX",
                &keys);
    }
    if (s.code) {
        return Status::fail(1, "cannot read the list of tables: " + s.reason);
    }
    for (const auto& r : cols.rows) {
        (*schema)[*r[0]].columns.push_back(*r[1]);
    }
    for (const auto& r : keys.rows) {
        (*schema)[*r[0]].key.push_back(*r[1]);
    }
    return Status::ok();
}

Status export_all(MYSQL* conn, Json* doc) {
    Schema schema;
    Status s = read_schema(conn, &schema);
    *doc = Json::object();
    (*doc)["format"] = "util-db configuration";
    (*doc)["version"] = kFormatVersion;
    Json& tables = (*doc)["tables"] = Json::object();
    for (const auto& [name, t] : schema) {
        Rows rows;
        if (s.code == 0) {
            s = read_table(conn, name, t, &rows);
        }
        Json& list = tables[name] = Json::array();
        for (size_t k = 0; k < rows.rows.size(); ++k) {
            list.push_back(row_json(rows, k));
        }
    }
    return s;
}

Status load_document(const std::string& path, const Schema& schema, Json* doc) {
    bool readable = false;
    const std::string text = read_input(path, &readable);
    if (!readable) {
        return Status::fail(2, "cannot read " + path);
    }
    try {
        *doc = Json::parse(text);
    } catch (const Json::parse_error& e) {
        return Status::fail(1, path + ": not valid JSON: " + e.what());
    }
    if (!doc->is_object() || !doc->contains("version") || (*doc)["version"] != kFormatVersion ||
        !doc->contains("tables") || !(*doc)["tables"].is_object()) {
        return Status::fail(1, path + ": not a configuration document of version " + std::to_string(kFormatVersion) +
                                   " (\"version\" and \"tables\")");
    }
    for (const auto& [name, rows] : (*doc)["tables"].items()) {
        const auto t = schema.find(name);
        if (t == schema.end()) {
            return Status::fail(1, path + ": unknown table " + name);
        }
        if (!rows.is_array()) {
            return Status::fail(1, path + ": table " + name + ": not a list of rows");
        }
        size_t n = 0;
        for (const Json& row : rows) {
            ++n;
            const std::string where = path + ": table " + name + ", row " + std::to_string(n);
            if (!row.is_object()) {
                return Status::fail(1, where + ": not an object");
            }
            for (const auto& [col, v] : row.items()) {
                const auto& cs = t->second.columns;
                if (std::find(cs.begin(), cs.end(), col) == cs.end()) {
                    return Status::fail(1, where + ": unknown column " + col);
                }
                if (!v.is_null() && !v.is_string() && !v.is_number_integer()) {
                    return Status::fail(1, where + ": column " + col + ": not a string, an integer or null");
                }
            }
        }
    }
    return Status::ok();
}

Status run_dump(MYSQL* conn, const std::string& table, bool json) {
    Schema schema;
    Status s = read_schema(conn, &schema);
    if (s.code) {
        return s;
    }
    const auto t = schema.find(table);
    if (t == schema.end()) {
        return Status::fail(1, "no table " + table + " in the configuration database");
    }
    Rows rows;
    s = read_table(conn, table, t->second, &rows);
    if (s.code) {
        return s;
    }
    if (json) {
        Json doc = {{"table", table}, {"rows", Json::array()}};
        for (size_t k = 0; k < rows.rows.size(); ++k) {
            doc["rows"].push_back(row_json(rows, k));
        }
        fputs(dump_text(doc).c_str(), stdout);
        return s;
    }
    std::vector<std::vector<std::string>> cells{rows.columns};
    for (const auto& r : rows.rows) {
        cells.emplace_back();
        for (const Cell& c : r) {
            cells.back().push_back(c ? *c : "NULL");
        }
    }
    std::vector<size_t> width(rows.columns.size(), 0);
    for (const auto& r : cells) {
        for (size_t i = 0; i < r.size(); ++i) {
            width[i] = std::max(width[i], r[i].size());
        }
    }
    for (const auto& r : cells) {
        for (size_t i = 0; i < r.size(); ++i) {
            printf("%-*s%s", static_cast<int>(width[i]), r[i].c_str(), i + 1 < r.size() ? "  " : "\n");
        }
    }
    printf("(%zu row%s)\n", rows.rows.size(), rows.rows.size() == 1 ? "" : "s");
    return s;
}

Status run_import(MYSQL* conn, const std::string& path, bool json) {
    Schema schema;
    Json doc;
    Status s = read_schema(conn, &schema);
    if (s.code == 0) {
        s = load_document(path, schema, &doc);
    }
    if (s.code) {
        return s;
    }
    // Ids are kept as the file gives them, 0 included.
    s = run(conn, "SET SESSION sql_mode = CONCAT(@@sql_mode, ',NO_AUTO_VALUE_ON_ZERO')");
    if (s.code == 0) {
        s = run(conn, "START TRANSACTION");
    }
    size_t total = 0;
    for (auto t = schema.begin(); s.code == 0 && t != schema.end(); ++t) {
        s = run(conn, "DELETE FROM " + quote_name(t->first));
        if (s.code) {
            s.reason = "table " + t->first + ": " + s.reason;
        }
    }
    const Json& tables = doc["tables"];
    for (auto t = tables.begin(); s.code == 0 && t != tables.end(); ++t) {
        size_t n = 0;
        for (const Json& row : t.value()) {
            ++n;
            std::string cols;
            std::string vals;
            for (const auto& [col, v] : row.items()) {
                cols += (cols.empty() ? "" : ",") + quote_name(col);
                std::string lit = "NULL";
                if (v.is_string()) {
                    const std::string& str = v.get_ref<const std::string&>();
                    std::vector<char> buf(str.size() * 2 + 1);
                    const unsigned long len = mysql_real_escape_string(conn, buf.data(), str.data(), str.size());
                    lit = "'" + std::string(buf.data(), len) + "'";
                } else if (v.is_number()) {
                    lit = v.dump();
                }
                vals += (vals.empty() ? "" : ",") + lit;
            }
            s = run(conn, "INSERT INTO " + quote_name(t.key()) + " (" + cols + ") VALUES (" + vals + ")");
            if (s.code) {
                s.reason = "table " + t.key() + ", row " + std::to_string(n) + " (" +
                           key_text(schema.at(t.key()), row) + "): " + s.reason;
                break;
            }
            ++total;
        }
    }
    if (s.code == 0) {
        s = run(conn, "COMMIT");
    }
    if (s.code) {
        run(conn, "ROLLBACK");
        s.reason = "import of " + path + " failed, nothing changed: " + s.reason;
        return s;
    }
    if (json) {
        fputs(dump_text(Json{{"imported", path}, {"tables", tables.size()}, {"rows", total}}).c_str(), stdout);
    } else {
        printf("imported %s: %zu tables, %zu rows\n", path.c_str(), tables.size(), total);
    }
    return s;
}

// Differences between a saved document and the running configuration, per
// table and row: "removed" (only in the file), "added" (only in the
// database), "changed" (the columns that differ).
Status run_diff(MYSQL* conn, const std::string& path, bool json) {
    Schema schema;
    Json saved;
    Json running;
    Status s = read_schema(conn, &schema);
    if (s.code == 0) {
        s = load_document(path, schema, &saved);
    }
    if (s.code == 0) {
        s = export_all(conn, &running);
    }
    if (s.code) {
        return s.code == 1 ? Status::fail(2, s.reason) : s;
    }
    Json changes = Json::array();
    for (const auto& [name, t] : schema) {
        std::map<std::string, Json> before;
        std::map<std::string, Json> after;
        if (saved["tables"].contains(name)) {
            for (const Json& r : saved["tables"][name]) {
                before[key_text(t, r)] = r;
            }
        }
        for (const Json& r : running["tables"][name]) {
            after[key_text(t, r)] = r;
        }
        std::set<std::string> keys;
        for (const auto& m : {before, after}) {
            for (const auto& kv : m) {
                keys.insert(kv.first);
            }
        }
        for (const std::string& k : keys) {
            Json c = {{"table", name}, {"row", k}};
            if (!after.count(k)) {
                c["change"] = "removed";
            } else if (!before.count(k)) {
                c["change"] = "added";
            } else {
                Json cols = Json::array();
                for (const std::string& col : t.columns) {
                    const Json& a = before[k].contains(col) ? before[k][col] : Json();
                    if (a != after[k][col]) {
                        cols.push_back(col);
                    }
                }
                if (cols.empty()) {
                    continue;
                }
                c["change"] = "changed";
                c["columns"] = cols;
            }
            changes.push_back(c);
        }
    }
    if (json) {
        fputs(dump_text(Json{{"equal", changes.empty()}, {"changes", changes}}).c_str(), stdout);
    } else {
        for (const Json& c : changes) {
            const std::string change = c["change"];
            std::string line = change + " " + c["table"].get<std::string>() + " " + c["row"].get<std::string>();
            if (c.contains("columns")) {
                std::string cols;
                for (const Json& col : c["columns"]) {
                    cols += (cols.empty() ? "" : ",") + col.get<std::string>();
                }
                line += ": " + cols;
            }
            printf("%s\n", line.c_str());
        }
    }
    return changes.empty() ? Status::ok() : Status{1, ""};
}

namespace {

// The references between tables that the library never checks.
struct Reference {
    const char* table;
    const char* id;
    const char* column;
    const char* target;
    const char* target_column;
    const char* names_nothing;  // the values, besides NULL, that name no row
};

const Reference kReferences[] = {
    {"SecurityAreaInterfaces", "securityAreaInterfaceId", "interfaceName", "NetInterfaces", "interfaceName", "''"},
    {"SecurityAreaInterfaces", "securityAreaInterfaceId", "securityAreaId", "SecurityAreas", "securityAreaId", nullptr},
    {"AddressPools", "addressPoolId", "interfaceName", "NetInterfaces", "interfaceName", "''"},
    // A route through a gateway is stored with the interface 'any'.
    {"RouteDatas", "routeId", "outInterfaceName", "NetInterfaces", "interfaceName", "'','any'"},
    {"Assets", "assetId", "securityAreaName", "SecurityAreas", "name", "''"},
    {"AssetProperties", "assetPropertyId", "assetId", "Assets", "assetId", nullptr},
    {"ServerRules", "serverRuleId", "serverId", "Servers", "serverId", nullptr},
    {"Traits", "traitid", "appId", "Apps", "appid", nullptr},
};

}  // namespace

Status run_check(MYSQL* conn, bool json) {
    Json found = Json::array();
    for (const Reference& r : kReferences) {
        const std::string col = std::string("c.") + quote_name(r.column);
        Rows rows;
        const Status s = run(conn, "SELECT c." + quote_name(r.id) + ", " + col + " FROM " + quote_name(r.table) +
                                       " c WHERE " + col + " IS NOT NULL" + (r.names_nothing ? " AND " + col + " NOT IN (" + r.names_nothing + ")" : "") +
                                       " AND NOT EXISTS (SELECT 1 FROM " + quote_name(r.target) + " t WHERE t." +
                                       quote_name(r.target_column) + " = " + col + ") ORDER BY c." + quote_name(r.id),
                             &rows);
        if (s.code) {
            return Status::fail(2, "check of " + std::string(r.table) + "." + r.column + ": " + s.reason);
        }
        for (const auto& row : rows.rows) {
            found.push_back({{"table", r.table},
                             {"row", std::string(r.id) + "=" + *row[0]},
                             {"column", r.column},
                             {"value", *row[1]},
                             {"missing_from", std::string(r.target) + "." + r.target_column}});
        }
    }
    if (json) {
        fputs(dump_text(Json{{"dangling", found}}).c_str(), stdout);
    } else {
        for (const Json& f : found) {
            printf("%s %s: %s '%s' not in %s\n", f["table"].get<std::string>().c_str(),
                   f["row"].get<std::string>().c_str(), f["column"].get<std::string>().c_str(),
                   f["value"].get<std::string>().c_str(), f["missing_from"].get<std::string>().c_str());
        }
    }
    return found.empty() ? Status::ok() : Status{1, ""};
}

// The node's role and replication state.
Status run_status(MYSQL* conn, bool json) {
    Rows vars;
    Rows replica;
    Rows semi;
    Status s = run(conn,
                   "SELECT @@hostname AS host, @@port AS port, @@server_id AS server_id, @@version AS version, "
                   "@@read_only AS read_only, @@gtid_current_pos AS gtid_current_pos, "
                   "@@gtid_slave_pos AS gtid_slave_pos, @@gtid_binlog_pos AS gtid_binlog_pos",
                   &vars);
    if (s.code == 0) {
        s = run(conn, "SHOW SLAVE STATUS", &replica);
    }
    if (s.code == 0) {
        // Semi-synchronous replication, where the server has it.
        run(conn,
            "SELECT VARIABLE_NAME, VARIABLE_VALUE FROM information_schema.GLOBAL_VARIABLES "
            "WHERE VARIABLE_NAME LIKE 'RPL_SEMI_SYNC_%_ENABLED' UNION ALL "
            "SELECT VARIABLE_NAME, VARIABLE_VALUE FROM information_schema.GLOBAL_STATUS "
            "WHERE VARIABLE_NAME IN ('RPL_SEMI_SYNC_MASTER_STATUS', 'RPL_SEMI_SYNC_MASTER_CLIENTS', "
            "'RPL_SEMI_SYNC_SLAVE_STATUS') ORDER BY 1",
            &semi);
    }
    if (s.code || vars.rows.empty()) {
        return Status::fail(1, "cannot read the server's state: " + s.reason);
    }
    Json doc = Json::object();
    doc["role"] = "primary";
    for (size_t i = 0; i < vars.columns.size(); ++i) {
        doc[vars.columns[i]] = cell_json(vars.rows[0][i], vars.integer[i]);
    }
    const bool read_only = doc["read_only"] == 1;
    doc["read_only"] = read_only ? "ON" : "OFF";
    Json rep = nullptr;
    if (!replica.rows.empty()) {
        rep = Json::object();
        for (const char* name : {"Master_Host", "Master_Port", "Using_Gtid", "Slave_IO_Running", "Slave_SQL_Running",
                                 "Seconds_Behind_Master", "Last_IO_Error", "Last_SQL_Error"}) {
            for (size_t i = 0; i < replica.columns.size(); ++i) {
                if (replica.columns[i] == name) {
                    rep[name] = cell_json(replica.rows[0][i], replica.integer[i]);
                }
            }
        }
    }
    // A node that follows a primary, or is still meant to (read-only), is a
    // replica; a promoted one keeps its stopped replication settings.
    if (!rep.is_null() && (rep["Slave_IO_Running"] == "Yes" || rep["Slave_SQL_Running"] == "Yes" || read_only)) {
        doc["role"] = "replica";
    }
    doc["replication"] = rep;
    Json semisync = Json::object();
    for (const auto& r : semi.rows) {
        std::string name = *r[0];
        std::transform(name.begin(), name.end(), name.begin(), ::tolower);
        semisync[name] = r[1] ? Json(*r[1]) : Json();
    }
    doc["semi_sync"] = semisync;
    if (json) {
        fputs(dump_text(doc).c_str(), stdout);
        return s;
    }
    for (const auto& [k, v] : doc.items()) {
        if (v.is_object()) {
            printf("%s:%s\n", k.c_str(), v.empty() ? " (none)" : "");
            for (const auto& [k2, v2] : v.items()) {
                printf("  %s: %s\n", k2.c_str(), v2.is_string() ? v2.get<std::string>().c_str() : v2.dump().c_str());
            }
        } else {
            printf("%s: %s\n", k.c_str(),
                   v.is_null() ? "(none)" : v.is_string() ? v.get<std::string>().c_str() : v.dump().c_str());
        }
    }
    return s;
}

}  // namespace config
