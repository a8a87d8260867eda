#include "util-db-error.h"

struct util_db_help_info error_help_info[1] = {{0, ""}};
