// util-db: whole-configuration operations on the tool's own connection (the
// library handle's MySQL connection, used directly): export, import, diff,
// check, dump and status.
#pragma once

#include <mysql.h>

#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace config {

using Json = nlohmann::ordered_json;

// The version of the export document; import and diff accept only this one.
constexpr int kFormatVersion = 1;

// A base table of the configuration database: columns in table order, the
// primary key (empty: the row is its own key).
struct Table {
    std::vector<std::string> columns;
    std::vector<std::string> key;
};
using Schema = std::map<std::string, Table>;  // by name, in byte order

// The outcome of one operation: an exit status and, when it is not 0, the
// reason (printed on standard error by the caller).
struct Status {
    int code = 0;
    std::string reason;
    static Status ok() { return {}; }
    static Status fail(int code, std::string reason) { return {code, std::move(reason)}; }
};

// The whole of FILE, or of standard input for "-"; *ok false when unreadable.
std::string read_input(const std::string& path, bool* ok);

Status read_schema(MYSQL* conn, Schema* schema);
// Every row of every table, rows ordered by primary key, SQL NULL as null.
Status export_all(MYSQL* conn, Json* doc);
// Reads a document (FILE, or "-": standard input) and checks it against the
// schema: tables and columns known, values null / string / integer.
Status load_document(const std::string& path, const Schema& schema, Json* doc);

Status run_dump(MYSQL* conn, const std::string& table, bool json);
Status run_import(MYSQL* conn, const std::string& path, bool json);
Status run_diff(MYSQL* conn, const std::string& path, bool json);
Status run_check(MYSQL* conn, bool json);
Status run_status(MYSQL* conn, bool json);

}  // namespace config
