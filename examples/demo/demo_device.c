/* Device settings: work mode with automatic switching, time and NTP, where
 * syslog output goes and one remote syslog server; the bypass unit "bypass0"
 * and the remote-service rules "ssh" and "https". Bypass units and strategy
 * rules are provisioned with the appliance: the library only updates them. */
#include <stdio.h>
#include <string.h>

#include "demo.h"

#define DEMO_CELLS 8
#define DEMO_CELL 64

/* Runs a look-up through the library's statement layer and copies the cells
 * of its first row (NULL as "NULL"). Returns the row count, or -1. */
static int first_row(db_handle_t* h, const char* sql, char cells[DEMO_CELLS][DEMO_CELL]) {
    MYSQL_RES* res = (MYSQL_RES*)db_store_result(h, sql);
    if (res == NULL) {
        return -1;
    }
    const int n = (int)mysql_num_rows(res);
    const unsigned fields = mysql_num_fields(res);
    MYSQL_ROW row = mysql_fetch_row(res);
    memset(cells, 0, DEMO_CELLS * DEMO_CELL);
    for (unsigned i = 0; row != NULL && i < fields && i < DEMO_CELLS; ++i) {
        snprintf(cells[i], DEMO_CELL, "%s", row[i] != NULL ? row[i] : "NULL");
    }
    mysql_free_result(res);
    return n;
}

static int basic_settings(db_handle_t* h) {
    char c[DEMO_CELLS][DEMO_CELL];
    int failed = 0;
    if (first_row(h, "select count(*) from BasicSettings", c) == 1 && strcmp(c[0], "0") == 0) {
        failed += demo_check(insertWorkModeBasicSettings(h, 0) == 0, "create the settings row");
    }
    failed += demo_check(setWorkModeBasicSettings(h, 1) == 0, "work mode 1");
    failed += demo_check(autoswitchWorkModeBasicSettingsOn(h, "23:00", 2) == 0, "switch to mode 2 at 23:00");
    failed += demo_check(timesettingBasicSettingsOff(h, "2024-06-01 08:00:00") == 0, "system time");
    failed += demo_check(activateNtpBasicSettings(h, 1, "192.168.1.250") == 0, "NTP on, server 192.168.1.250");
    failed += demo_check(setSyslogTurnBasicSettings(h, 1) == 0, "syslog storage 1");
    int n = first_row(h,
                      "select w_modeType, w_enableSwitch, w_switchTime, w_switchModeType, t_systemTime,"
                      " t_activateNtp, t_ntpIp, l_syslogStorageType from BasicSettings",
                      c);
    failed += demo_check(n >= 1 && strcmp(c[0], "1") == 0 && strcmp(c[1], "1") == 0 && strcmp(c[2], "23:00") == 0 &&
                             strcmp(c[5], "1") == 0 && strcmp(c[6], "192.168.1.250") == 0,
                         "settings read back");
    printf("  settings: mode %s, auto-switch %s to mode %s at %s, time %s, NTP %s via %s, syslog storage %s\n", c[0],
           strcmp(c[1], "1") == 0 ? "on" : "off", c[3], c[2], c[4], strcmp(c[5], "1") == 0 ? "on" : "off", c[6],
           c[7]);
    return failed;
}

static int syslog_servers(db_handle_t* h) {
    char c[DEMO_CELLS][DEMO_CELL];
    int failed = 0;
    /* Find or create: a new server answers 0, an existing one its id. */
    failed += demo_check(insertSyslogServerBasicSettings(h, "192.168.1.20", 2, 514) >= 0,
                         "syslog server 192.168.1.20 UDP 514");
    const int id = insertSyslogServerBasicSettings(h, "192.168.1.20", 2, 514);
    failed += demo_check(id > 0, "adding it again answers its id");
    /* A second server, then removed again; the delete is wide (address OR
     * protocol OR port), so the UDP server on 514 stays. */
    failed += demo_check(insertSyslogServerBasicSettings(h, "192.168.1.21", 1, 6514) >= 0,
                         "syslog server 192.168.1.21 TCP 6514");
    failed += demo_check(deleteSyslogServerBasicSettings(h, "192.168.1.21", 1, 6514) == 0,
                         "delete 192.168.1.21 and every TCP or port-6514 server");
    failed += demo_check(deleteSyslogServerBasicSettings(h, "192.168.1.21", 9, 6514) == -1,
                         "protocol code 9 refused");
    int n = first_row(h, "select count(*) from Syslogs where syslogProtocol = 'TCP' or syslogPort = 6514", c);
    failed += demo_check(n == 1 && strcmp(c[0], "0") == 0, "no TCP server left");
    n = first_row(h, "select syslogId, syslogIp, syslogProtocol, syslogPort from Syslogs order by syslogId", c);
    printf("  syslog servers: %d, first #%s %s %s/%s (id answered: %d)\n", n, c[0], c[1], c[2], c[3], id);
    return failed;
}

static int bypass_units(db_handle_t* h) {
    char c[DEMO_CELLS][DEMO_CELL];
    int failed = 0;
    failed += demo_check(updateBypassPowerOn(h, "bypass0", 1) == 0, "bypass0 engages on power-off");
    failed += demo_check(updateBypassFaultOn(h, "bypass0", 1) == 0, "bypass0 engages on application fault");
    if (first_row(h, "select powerOn, appFault from Bypasss where bypassName = 'bypass0'", c) == 1) {
        failed += demo_check(strcmp(c[0], "1") == 0 && strcmp(c[1], "1") == 0, "bypass0 read back");
        printf("  bypass0: power-off %s, application fault %s\n", c[0], c[1]);
    } else {
        printf("  bypass0: unit absent from Bypasss, the updates changed nothing\n");
    }
    return failed;
}

static int strategy_rules(db_handle_t* h) {
    char c[DEMO_CELLS][DEMO_CELL];
    int failed = 0;
    failed += demo_check(setOffRemoteServiceportStrageMangement(h, "ssh") == 0, "ssh off");
    failed += demo_check(setRemoteServiceStrategyRuleName(h, "ssh", "port=22,src=192.168.1.0/24") == 0,
                         "ssh rule data (re-enables it)");
    failed += demo_check(setOffRemoteServiceportStrageMangement(h, "https") == 0, "https off");
    /* A quote breaks the statement of the default profile (refused, the data
     * stays); the safe profile escapes it (stored as given). */
    const int quoted = setRemoteServiceStrategyRuleName(h, "ssh", "it's");
    const char* ssh_data = quoted == 0 ? "it's" : "port=22,src=192.168.1.0/24";
    failed += demo_check(quoted == 0 || quoted == -1,
                         quoted == 0 ? "rule data with a quote stored (safe profile)"
                                     : "rule data with a quote refused (default profile)");
    const char* names[] = {"ssh", "https"};
    const char* want[] = {"0", "1"};
    for (int i = 0; i < 2; ++i) {
        char sql[128];
        snprintf(sql, sizeof sql, "select disabled, ruleData from StrategyRules where strategyRuleName = '%s'",
                 names[i]);
        if (first_row(h, sql, c) == 1) {
            failed += demo_check(strcmp(c[0], want[i]) == 0, i == 0 ? "ssh active" : "https disabled");
            if (i == 0) {
                failed += demo_check(strcmp(c[1], ssh_data) == 0, "ssh rule data as expected");
            }
            printf("  rule %s: %s, data %s\n", names[i], strcmp(c[0], "0") == 0 ? "active" : "disabled", c[1]);
        } else {
            printf("  rule %s: absent from StrategyRules, the updates changed nothing\n", names[i]);
        }
    }
    return failed;
}

int demo_device(db_handle_t* h) {
    return basic_settings(h) + syslog_servers(h) + bypass_units(h) + strategy_rules(h);
}
