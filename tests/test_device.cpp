// Basic settings, syslog servers, bypass units and remote-service strategy
// rules, against the private server.
#include <stdarg.h>
#include <stdio.h>

#include "harness.h"

using namespace testbed;
using Texts = std::vector<std::string>;
using Rows = std::vector<Row>;

namespace {

const char kLookup[] = "select syslogId from Syslogs                 where syslogIp = '%s' &&                syslogProtocol = '%s' &&                syslogPort = %d;";
const char kInsertSyslog[] = "insert into Syslogs (syslogIp,syslogProtocol,syslogPort) VALUES('%s','%s',%d);";
const char kDeleteSyslog[] = "delete from Syslogs where syslogIp = '%s' or syslogProtocol = '%s' or syslogPort = %d";
const char kRuleData[] = "UPDATE StrategyRules set disabled = %d, ruleData  = '%s' where strategyRuleName = '%s';";
const char kRuleSwitch[] = "update StrategyRules set disabled = %d where strategyRuleName = '%s';";

std::string stmt(const char* fmt, ...) __attribute__((format(printf, 1, 2)));
std::string stmt(const char* fmt, ...) {
    char buf[1024];
    va_list ap;
    va_start(ap, fmt);
    vsnprintf(buf, sizeof buf, fmt, ap);
    va_end(ap);
    return buf;
}

Row R(std::initializer_list<const char*> cells) {
    Row r;
    for (const char* c : cells) r.push_back(Cell(c));
    return r;
}

class DeviceTest : public LibraryTest {
protected:
    void SetUp() override {
        truncate({"BasicSettings", "Syslogs", "Bypasss", "StrategyRules"});
        LibraryTest::SetUp();
    }
    void add_syslog(const char* ip, const char* proto, int port) {
        exec(stmt("insert into Syslogs (syslogIp,syslogProtocol,syslogPort) values ('%s','%s',%d)", ip, proto, port));
    }
    Rows syslogs() { return rows("select syslogIp,syslogProtocol,syslogPort from Syslogs order by syslogId"); }
};

}  // namespace

TEST_F(DeviceTest, SettersActOnEveryRowWithoutWhereClause) {
    const Texts statements = {
        "UPDATE BasicSettings SET w_modeType = 3",
        "UPDATE BasicSettings SET w_enableSwitch = 0",
        "UPDATE BasicSettings SET w_enableSwitch=1,w_switchTime = '02:30',w_switchModeType = 2",
        "UPDATE BasicSettings SET t_systemTime = '2024-01-02 03:04:05'",
        "UPDATE BasicSettings SET t_activateNtp = 1,t_ntpIp = 'pool.ntp.org'",
        "UPDATE BasicSettings SET l_syslogStorageType = 2",
    };
    auto all_setters = [&] {
        EXPECT_EQ(setWorkModeBasicSettings(&h, 3), 0);
        EXPECT_EQ(autoswitchWorkModeBasicSettingsOff(&h, 0), 0);
        EXPECT_EQ(autoswitchWorkModeBasicSettingsOn(&h, "02:30", 2), 0);  // the switch is always 1
        EXPECT_EQ(timesettingBasicSettingsOff(&h, "2024-01-02 03:04:05"), 0);
        EXPECT_EQ(activateNtpBasicSettings(&h, 1, "pool.ntp.org"), 0);
        EXPECT_EQ(setSyslogTurnBasicSettings(&h, 2), 0);
    };
    all_setters();  // empty table: success, nothing changes
    EXPECT_EQ(sent(), statements);
    EXPECT_EQ(count("BasicSettings"), 0);

    EXPECT_EQ(insertWorkModeBasicSettings(&h, 4), 0);
    EXPECT_EQ(insertWorkModeBasicSettings(&h, 0), 0);
    EXPECT_EQ(sent().back(), "insert into BasicSettings (basicSettingType) VALUES(0);");
    clear();
    all_setters();
    Texts traces;  // only the statement layer's own traces
    for (const std::string& s : statements) traces.push_back("7:database cmd: " + s + "\n");
    EXPECT_EQ(records(), traces);
    const char* columns =
        "select basicSettingType,w_modeType,w_enableSwitch,w_switchTime,w_switchModeType,t_systemTime,"
        "t_activateNtp,t_ntpIp,l_syslogStorageType from BasicSettings order by basicSettingId";
    EXPECT_EQ(rows(columns), (Rows{R({"4", "3", "1", "02:30", "2", "2024-01-02 03:04:05", "1", "pool.ntp.org", "2"}),
                                   R({"0", "3", "1", "02:30", "2", "2024-01-02 03:04:05", "1", "pool.ntp.org", "2"})}));
}

// Which functions test the connection themselves (nothing sent, nothing logged)
// and which leave it to db_query ("Invalid param\n" at 7).
TEST_F(DeviceTest, ArgumentChecks) {
    EXPECT_EQ(setWorkModeBasicSettings(nullptr, 1), -1);
    EXPECT_EQ(autoswitchWorkModeBasicSettingsOff(nullptr, 1), -1);
    EXPECT_EQ(autoswitchWorkModeBasicSettingsOn(nullptr, "01:00", 1), -1);
    EXPECT_EQ(insertWorkModeBasicSettings(nullptr, 1), -1);
    EXPECT_EQ(timesettingBasicSettingsOff(nullptr, "x"), -1);
    EXPECT_EQ(activateNtpBasicSettings(nullptr, 1, "x"), -1);
    EXPECT_EQ(setSyslogTurnBasicSettings(nullptr, 1), -1);
    EXPECT_EQ(insertWorkModeBasicSettings(&h, -1), -1);
    EXPECT_EQ(insertSyslogServerBasicSettings(nullptr, "10.0.0.1", 1, 514), -1);
    EXPECT_EQ(insertSyslogServerBasicSettings(&h, nullptr, 1, 514), -1);
    EXPECT_EQ(deleteSyslogServerBasicSettings(&h, nullptr, 1, 514), -1);
    EXPECT_EQ(updateBypassPowerOn(nullptr, "bp0", 1), -1);
    EXPECT_EQ(updateBypassFaultOn(nullptr, "bp0", 1), -1);
    EXPECT_EQ(updateBypassPowerOn(&h, nullptr, 1), -1);
    EXPECT_EQ(updateBypassFaultOn(&h, nullptr, 1), -1);
    EXPECT_EQ(setRemoteServiceStrategyRuleName(&h, nullptr, "x"), -1);
    EXPECT_EQ(setRemoteServiceStrategyRuleName(&h, "ssh", nullptr), -1);
    EXPECT_EQ(setOnRemoteServiceportStrageMangement(&h, nullptr), -1);
    EXPECT_EQ(setOffRemoteServiceportStrageMangement(&h, nullptr), -1);
    EXPECT_TRUE(logs().empty());

    EXPECT_EQ(deleteSyslogServerBasicSettings(nullptr, "10.0.0.1", 1, 514), -1);
    EXPECT_EQ(setRemoteServiceStrategyRuleName(nullptr, "ssh", "x"), -1);
    EXPECT_EQ(setOnRemoteServiceportStrageMangement(nullptr, "ssh"), -1);
    EXPECT_EQ(setOffRemoteServiceportStrageMangement(nullptr, "ssh"), -1);
    EXPECT_EQ(records(), Texts(4, "7:Invalid param\n"));
    EXPECT_TRUE(sent().empty());
}

TEST_F(DeviceTest, SyslogFindOrCreate) {
    add_syslog("10.0.0.7", "TCP", 601);
    EXPECT_EQ(insertSyslogServerBasicSettings(&h, "10.0.0.1", 2, 514), 0);
    EXPECT_EQ(sent(), (Texts{stmt(kLookup, "10.0.0.1", "UDP", 514), stmt(kInsertSyslog, "10.0.0.1", "UDP", 514)}));
    EXPECT_EQ(syslogs(), (Rows{R({"10.0.0.7", "TCP", "601"}), R({"10.0.0.1", "UDP", "514"})}));

    clear();
    EXPECT_EQ(insertSyslogServerBasicSettings(&h, "10.0.0.1", 2, 514), 2);  // exists: its id, nothing inserted
    EXPECT_EQ(sent(), (Texts{stmt(kLookup, "10.0.0.1", "UDP", 514)}));
    EXPECT_EQ(texts(7).back(), "syslogId is: 2\n");
    std::string file;
    strip_site(logs().back().text, &file);
    EXPECT_EQ(file, "db_tables/util-db-BasicSetting.cpp");
    EXPECT_EQ(insertSyslogServerBasicSettings(&h, "10.0.0.7", 1, 601), 1);
    EXPECT_EQ(count("Syslogs"), 2);

    // A row counted but not fetched counts as absent: the server is added again.
    clear();
    fail_fetch_at(1);
    EXPECT_EQ(insertSyslogServerBasicSettings(&h, "10.0.0.7", 1, 601), 0);
    EXPECT_EQ(count("Syslogs", "syslogIp = '10.0.0.7'"), 2);
    EXPECT_TRUE(texts(3).empty());
}

TEST_F(DeviceTest, SyslogDeleteIsWide) {
    add_syslog("10.0.0.1", "UDP", 514);
    add_syslog("10.0.0.9", "TCP", 514);
    add_syslog("10.0.0.2", "UDP", 1514);
    add_syslog("10.0.0.1", "TCP", 601);
    add_syslog("10.0.0.3", "TCP", 602);
    EXPECT_EQ(deleteSyslogServerBasicSettings(&h, "10.0.0.1", 2, 514), 0);
    EXPECT_EQ(sent(), (Texts{stmt(kDeleteSyslog, "10.0.0.1", "UDP", 514)}));
    EXPECT_EQ(syslogs(), (Rows{R({"10.0.0.3", "TCP", "602"})}));
}

TEST_F(DeviceTest, SyslogRefusesUnknownProtocolCodes) {
    add_syslog("10.0.0.1", "UDP", 514);
    for (int code : {0, 3}) {
        clear();
        EXPECT_EQ(insertSyslogServerBasicSettings(&h, "10.0.0.1", code, 514), -1);
        EXPECT_EQ(records(), (Texts{"3:" "error:insertSyslogServerBasicSettings\n"}));
        EXPECT_TRUE(sent().empty());
        clear();
        EXPECT_EQ(deleteSyslogServerBasicSettings(&h, "10.0.0.1", code, 514), -1);
        EXPECT_EQ(sent(), (Texts{""}));  // the empty buffer still goes out and is refused
        EXPECT_EQ(texts(3), (Texts{"delete Fault,syslogProtocol\n", "Data base query faild: Query was empty\n"}));
    }
    EXPECT_EQ(count("Syslogs"), 1);
}

TEST_F(DeviceTest, BypassUpdatesOnlyTheNamedUnit) {
    exec("insert into Bypasss values ('bp0', 0, 0), ('bp1', 0, 0)");
    EXPECT_EQ(updateBypassPowerOn(&h, "bp1", 1), 0);
    EXPECT_EQ(updateBypassFaultOn(&h, "bp1", 2), 0);
    EXPECT_EQ(updateBypassPowerOn(&h, "absent", 1), 0);
    EXPECT_EQ(sent(), (Texts{"UPDATE Bypasss SET powerOn = 1 WHERE bypassName = 'bp1'",
                             "UPDATE Bypasss SET appFault = 2 WHERE bypassName = 'bp1'",
                             "UPDATE Bypasss SET powerOn = 1 WHERE bypassName = 'absent'"}));
    EXPECT_EQ(rows("select * from Bypasss order by bypassName"), (Rows{R({"bp0", "0", "0"}), R({"bp1", "1", "2"})}));
    EXPECT_TRUE(texts(3).empty());
}

TEST_F(DeviceTest, StrategyRules) {
    exec("insert into StrategyRules values ('ssh', 1, 'port=22'), ('https', 0, 'port=443')");
    EXPECT_EQ(setRemoteServiceStrategyRuleName(&h, "ssh", "port=2222"), 0);  // re-enables the rule
    EXPECT_EQ(setOffRemoteServiceportStrageMangement(&h, "https"), 0);
    const std::string all = "select * from StrategyRules order by strategyRuleName";
    EXPECT_EQ(rows(all), (Rows{R({"https", "1", "port=443"}), R({"ssh", "0", "port=2222"})}));
    EXPECT_EQ(setOnRemoteServiceportStrageMangement(&h, "https"), 0);
    EXPECT_EQ(setOffRemoteServiceportStrageMangement(&h, "absent"), 0);
    EXPECT_EQ(sent(), (Texts{stmt(kRuleData, 0, "port=2222", "ssh"), stmt(kRuleSwitch, 1, "https"),
                             stmt(kRuleSwitch, 0, "https"), stmt(kRuleSwitch, 1, "absent")}));
    const Rows before = {R({"https", "0", "port=443"}), R({"ssh", "0", "port=2222"})};
    EXPECT_EQ(rows(all), before);

    // Unescaped quote: the statement fails.
    clear();
    EXPECT_EQ(setRemoteServiceStrategyRuleName(&h, "ssh", "it's"), -1);
    ASSERT_EQ(texts(3).size(), 1u);
    EXPECT_EQ(texts(3)[0].rfind("Data base query faild: ", 0), 0u);
    // Over-long data: cut at 1023 characters, sent as it is, and fails.
    clear();
    EXPECT_EQ(setRemoteServiceStrategyRuleName(&h, "ssh", std::string(1100, 'a').c_str()), -1);
    ASSERT_EQ(sent().size(), 1u);
    EXPECT_EQ(sent()[0], stmt(kRuleData, 0, std::string(1100, 'a').c_str(), "ssh").substr(0, 1023));
    EXPECT_EQ(rows(all), before);
}
