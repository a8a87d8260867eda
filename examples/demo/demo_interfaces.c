#include "demo.h"

int demo_interfaces(db_handle_t* h) {
    (void)h;
    return 0;
}
