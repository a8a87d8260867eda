// Basic settings, syslog servers, bypass units and remote-service strategy
// rules, against the private server.
#include "harness.h"

using namespace testbed;
using Texts = std::vector<std::string>;
using Rows = std::vector<Row>;
using Ints = std::vector<int>;

const char kLookup[] = "select syslogId from Syslogs                 where syslogIp = '%s' &&                syslogProtocol = '%s' &&                syslogPort = %d;";
const char kInsertSyslog[] = "insert into Syslogs (syslogIp,syslogProtocol,syslogPort) VALUES('%s','%s',%d);";
const char kDeleteSyslog[] = "delete from Syslogs where syslogIp = '%s' or syslogProtocol = '%s' or syslogPort = %d";
const char kRuleData[] = "UPDATE StrategyRules set disabled = %d, ruleData  = '%s' where strategyRuleName = '%s';";
const char kRuleSwitch[] = "update StrategyRules set disabled = %d where strategyRuleName = '%s';";

// A statement: each %s or %d of fmt in turn replaced by the next argument.
static std::string stmt(std::string fmt, const Texts& args) {
    for (const std::string& a : args) fmt.replace(fmt.find('%'), 2, a);
    return fmt;
}

using DeviceTest = LibraryTest;  // each test empties the tables it uses

TEST_F(DeviceTest, SettersActOnEveryRowWithoutWhereClause) {
    truncate({"BasicSettings"});
    const Texts statements = {"UPDATE BasicSettings SET w_modeType = 3", "UPDATE BasicSettings SET w_enableSwitch = 0",
                              "UPDATE BasicSettings SET w_enableSwitch=1,w_switchTime = '02:30',w_switchModeType = 2",
                              "UPDATE BasicSettings SET t_systemTime = '2024-01-02 03:04:05'",
                              "UPDATE BasicSettings SET t_activateNtp = 1,t_ntpIp = 'pool.ntp.org'",
                              "UPDATE BasicSettings SET l_syslogStorageType = 2"};
    EXPECT_EQ((Ints{insertWorkModeBasicSettings(&h, 4), insertWorkModeBasicSettings(&h, 0),
                    insertWorkModeBasicSettings(&h, -1)}), (Ints{0, 0, -1}));
    EXPECT_EQ(sent().back(), "insert into BasicSettings (basicSettingType) VALUES(0);");
    clear();  // the switch is always 1
    EXPECT_EQ((Ints{setWorkModeBasicSettings(&h, 3), autoswitchWorkModeBasicSettingsOff(&h, 0),
                    autoswitchWorkModeBasicSettingsOn(&h, "02:30", 2),
                    timesettingBasicSettingsOff(&h, "2024-01-02 03:04:05"),
                    activateNtpBasicSettings(&h, 1, "pool.ntp.org"), setSyslogTurnBasicSettings(&h, 2)}),
              Ints(6, 0));
    EXPECT_EQ(sent(), statements);
    EXPECT_EQ(records().size(), statements.size());  // only the statement layer's own traces
    EXPECT_EQ(rows("select * from BasicSettings"),
              (Rows{{"1", "4", "3", "1", "02:30", "2", "2024-01-02 03:04:05", "1", "pool.ntp.org", "2"},
                    {"2", "0", "3", "1", "02:30", "2", "2024-01-02 03:04:05", "1", "pool.ntp.org", "2"}}));
}

TEST_F(DeviceTest, SyslogFindOrCreateRefuseUnknownProtocolsAndDeleteWide) {
    truncate({"Syslogs"});
    exec("insert into Syslogs (syslogIp,syslogProtocol,syslogPort) values ('10.0.0.7','TCP',601)");
    const std::string all = "select syslogIp,syslogProtocol,syslogPort from Syslogs order by syslogId";
    auto add = [&](const char* ip, int p, int port) { return insertSyslogServerBasicSettings(&h, ip, p, port); };
    for (int code : {0, 3}) {  // the insert sends nothing; the delete's empty buffer still goes out and is refused
        clear();
        EXPECT_EQ((Ints{add("10.0.0.1", code, 514), deleteSyslogServerBasicSettings(&h, "10.0.0.1", code, 514)}),
                  (Ints{-1, -1}));
        EXPECT_EQ(sent(), (Texts{""}));
        EXPECT_EQ(records(), (Texts{"3:" "error:insertSyslogServerBasicSettings\n", "3:" "delete Fault,syslogProtocol\n",
                                    "7:database cmd: \n", "3:" "Data base query faild: Query was empty\n"}));
    }

    // Known: its id, nothing inserted. A row counted but not fetched (fetch 2) counts as absent: added again.
    clear();
    fail_fetch_at(2);
    EXPECT_EQ((Ints{add("10.0.0.1", 2, 514), add("10.0.0.7", 1, 601), add("10.0.0.7", 1, 601),
                    add("10.0.0.1", 2, 514)}), (Ints{0, 1, 0, 2}));
    const Texts one = {"10.0.0.1", "UDP", "514"}, seven = {"10.0.0.7", "TCP", "601"};
    EXPECT_EQ(sent(), (Texts{stmt(kLookup, one), stmt(kInsertSyslog, one), stmt(kLookup, seven), stmt(kLookup, seven),
                             stmt(kInsertSyslog, seven), stmt(kLookup, one)}));
    EXPECT_EQ(rows(all), (Rows{{"10.0.0.7", "TCP", "601"}, {"10.0.0.1", "UDP", "514"}, {"10.0.0.7", "TCP", "601"}}));
    EXPECT_TRUE(texts(3).empty());
    std::string file;
    EXPECT_EQ(strip_site(logs().back().text, &file), "syslogId is: 2\n");
    EXPECT_EQ(file, "db_tables/util-db-BasicSetting.cpp");

    // Every server sharing the address, the protocol or the port goes.
    exec("insert into Syslogs (syslogIp,syslogProtocol,syslogPort) values ('10.0.0.9','TCP',514),"
         "('10.0.0.2','UDP',1514),('10.0.0.1','TCP',601),('10.0.0.3','TCP',602)");
    clear();
    EXPECT_EQ(deleteSyslogServerBasicSettings(&h, "10.0.0.1", 2, 514), 0);
    EXPECT_EQ(sent(), (Texts{stmt(kDeleteSyslog, one)}));
    EXPECT_EQ(rows(all), (Rows{{"10.0.0.7", "TCP", "601"}, {"10.0.0.7", "TCP", "601"}, {"10.0.0.3", "TCP", "602"}}));
}

// Bypass units and strategy rules: updates by name (no row: still a success). Writing a rule's data re-enables it.
TEST_F(DeviceTest, BypassAndStrategyRulesUpdateOnlyTheNamedRow) {
    truncate({"Bypasss", "StrategyRules"});
    exec("insert into Bypasss values ('bp0', 0, 0), ('bp1', 0, 0)");
    exec("insert into StrategyRules values ('ssh', 1, 'port=22'), ('https', 0, 'port=443')");
    EXPECT_EQ((Ints{updateBypassPowerOn(&h, "bp1", 1), updateBypassFaultOn(&h, "bp1", 2),
                    updateBypassPowerOn(&h, "absent", 1), setRemoteServiceStrategyRuleName(&h, "ssh", "port=2222"),
                    setOffRemoteServiceportStrageMangement(&h, "https"),
                    setOnRemoteServiceportStrageMangement(&h, "https"),
                    setOffRemoteServiceportStrageMangement(&h, "absent")}),
              Ints(7, 0));
    EXPECT_EQ(sent(), (Texts{"UPDATE Bypasss SET powerOn = 1 WHERE bypassName = 'bp1'",
                             "UPDATE Bypasss SET appFault = 2 WHERE bypassName = 'bp1'",
                             "UPDATE Bypasss SET powerOn = 1 WHERE bypassName = 'absent'",
                             stmt(kRuleData, {"0", "port=2222", "ssh"}), stmt(kRuleSwitch, {"1", "https"}),
                             stmt(kRuleSwitch, {"0", "https"}), stmt(kRuleSwitch, {"1", "absent"})}));
}
