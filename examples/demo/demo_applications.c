/* Applications and inspection: an application with its traits, a session
 * limit, whitelist references, the ARP-spoof switch with an IP/MAC binding,
 * and an anti-attack group. */
#include <stdio.h>
#include <string.h>

#include "demo.h"

#define DEMO_ATTACK_TYPE 90

/* Rows that the appliance's own processes write (factory defaults, asset
 * discovery); the library only reads and updates them. */
static int seed(db_handle_t* h) {
    static const char* const rows[] = {
        "insert ignore into DpiSubscriptions values (1, 0)",
        "insert ignore into AntiAttacks values (9001, 90, 0, 0, 100), (9002, 90, 0, 0, 200)",
        "delete from Assets where ipAddress = '192.0.2.50'",
        "insert into Assets (name, ipAddress, macAddress, securityAreaName) "
        "values ('demo-printer', '192.0.2.50', '00:11:22:33:44:55', 'lan')",
    };
    int failures = 0;
    clear_asset_info(h, "192.0.2.50", NULL, 0); /* an earlier run's binding */
    for (size_t i = 0; i < sizeof rows / sizeof rows[0]; ++i) {
        failures += db_query(h, rows[i]) != 0;
    }
    return demo_check(failures == 0, "seed subscription, attack rules and a discovered asset");
}

static int applications(db_handle_t* h) {
    int failures = 0;
    db_app_info app;
    memset(&app, 0, sizeof app);
    app.pname = "demo-crm";
    app.type = 2;
    app.sport = "8443";
    app.inherit = 0;
    app.desc = "customer database front end";
    db_del_app_by_name(h, app.pname);
    failures += demo_check(db_add_app(h, &app) == 0, "add application demo-crm");
    app.type = -1;
    app.inherit = -1;
    app.sport = NULL;
    app.cport = "any";
    failures += demo_check(db_update_app_by_name(h, &app) == 0, "set its client port");

    db_app_info* list = db_get_app_info_by_name(h, "demo-crm");
    failures += demo_check(list != NULL && list->next == NULL, "read it back");
    if (list == NULL) {
        return failures;
    }
    printf("  app %d %s: type %d, ports %s/%s, %s\n", list->appid, list->pname, list->type,
           list->sport ? list->sport : "-", list->cport ? list->cport : "-", list->desc ? list->desc : "");
    const int appid = list->appid;
    db_free_app_info(list);

    db_del_trait_by_appid(h, appid);
    db_trait_info trait;
    memset(&trait, 0, sizeof trait);
    trait.appid = appid;
    trait.toffset = "0";
    trait.trait = "GET /crm/";
    trait.depth = "64";
    failures += demo_check(db_add_trait(h, &trait) == 0, "add trait GET /crm/");
    trait.toffset = NULL;
    trait.trait = "POST /crm/api";
    trait.depth = NULL;
    failures += demo_check(db_add_trait(h, &trait) == 0, "add trait POST /crm/api");

    db_trait_info* traits = db_get_trait_info_by_appid(h, appid);
    int n = 0;
    for (db_trait_info* t = traits; t != NULL; t = t->next, ++n) {
        printf("  trait %d: \"%s\" offset %s depth %s\n", t->traitid, t->trait ? t->trait : "",
               t->toffset ? t->toffset : "-", t->depth ? t->depth : "-");
    }
    db_free_trait_info(traits);
    failures += demo_check(n == 2, "the application has two traits");
    return failures;
}

static int sessions_and_whitelists(db_handle_t* h) {
    int failures = 0;
    const int id = insertSessionControls(h, 50, 500, "10.1.0.0/16", "192.0.2.10", 6, "demo-crm", 1, 1);
    failures += demo_check(id > 0, "limit sessions from 10.1.0.0/16 to the CRM server");
    failures += demo_check(insertSessionControls(h, 0, 0, "10.1.0.0/16", "192.0.2.10", 6, "demo-crm", 0, 0) == id,
                           "adding it again finds the same control");
    failures += demo_check(updateSessionControls(h, id, 100, 0, 1, 0) == id, "raise its rate limit");
    printf("  session control %d: 100 sessions/s, log on\n", id);

    deletePolicyToDpiWhitelistSid(h, 900);
    failures += demo_check(insertPolicyToDpiWhitelist(h, "sig-sqli-17", "3", 900) == 0 &&
                               insertPolicyToDpiWhitelist(h, "sig-xss-4", "3", 900) == 0,
                           "policy 900 exempts two signatures through whitelist 3");
    const int whitelist = selectPolicyToDpiWhitelistBySid(h, 900);
    failures += demo_check(whitelist == 3, "policy 900 uses whitelist 3");
    failures += demo_check(getPolicyToDpiWhitelistPolicyNum(h, "3") == 0, "count the references");
    return failures;
}

static int protection(db_handle_t* h) {
    int failures = 0;
    failures += demo_check(set_arpspoof_status(h, 1, 1) == 0 && get_arpspoof_status(h, 1) == 1,
                           "switch ARP-spoof protection on");

    clear_asset_info(h, "192.0.2.50", "00:11:22:33:44:55", 0);
    failures += demo_check(set_ipmac_asset_info(h, "192.0.2.50", "00:11:22:33:44:55", 0, 1, 1, 1) == 0,
                           "bind the printer's IP to its MAC");
    asset_info_t* bound = NULL;
    const int n = get_ipmac_asset_info(h, 1, &bound);
    int found = 0;
    for (int i = 0; i < n; ++i) {
        if (strcmp(bound[i].ipAddress, "192.0.2.50") == 0) {
            printf("  bound %s to %s\n", bound[i].ipAddress, bound[i].macAddress);
            found = 1;
        }
    }
    ipmac_asset_free(h, bound);
    failures += demo_check(found, "the binding is listed");
    char mac[128] = "";
    failures += demo_check(get_mac_by_ip(h, "192.0.2.50", mac) == 0 && strcmp(mac, "00:11:22:33:44:55") == 0,
                           "look the MAC up by IP");

    failures += demo_check(set_defend_switch_status(h, DEMO_ATTACK_TYPE, 1) == 0 &&
                               set_defend_switch_by_nameId(h, 9002, 1, 250) == 0,
                           "enable attack group 90 and rule 9002 at 250");
    attack_rule_t rules[8]; /* room for every rule of the group */
    const int count = get_defend_attack_rules(h, DEMO_ATTACK_TYPE, rules);
    for (int i = 0; i < count; ++i) {
        printf("  rule %d: %s, threshold %d\n", rules[i].attackNameId, rules[i].enable ? "on" : "off",
               rules[i].threshold);
    }
    failures += demo_check(count == 2 && get_defend_switch_status(h, DEMO_ATTACK_TYPE) == 1,
                           "group 90 is on with its two rules");
    return failures;
}

int demo_applications(db_handle_t* h) {
    int failures = seed(h);
    failures += applications(h);
    failures += sessions_and_whitelists(h);
    failures += protection(h);
    return failures;
}
