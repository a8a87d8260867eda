#include "util-table-total.h"

struct total_info total_table_help[DB_TABLE_ID_MAX - 1] = {};
