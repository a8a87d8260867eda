-- Reference schema of the appliance's configuration database (database "firewall"),
-- as the library's statements use it: every table and column they name, with
-- the column positions the readers rely on. The library never creates tables;
-- this schema serves the tests, the demo and new installations.

-- ---- database ----
DROP DATABASE IF EXISTS firewall;
CREATE DATABASE firewall DEFAULT CHARACTER SET utf8mb4;
USE firewall;

-- ---- interfaces ----
-- One row per interface. No key on interfaceName: the rename statement of the
-- work-mode switch gives every row the same name.
CREATE TABLE NetInterfaces (
  interfaceId          INT NOT NULL AUTO_INCREMENT PRIMARY KEY,
  interfaceName        VARCHAR(255) NOT NULL,
  interfaceType        VARCHAR(8)   NULL,
  vlanIndex            INT          NULL,
  vlanType             VARCHAR(64)  NULL,
  vlanEthInterfaceName VARCHAR(255) NULL,
  subIndex             INT          NULL,
  subEthInterfaceName  VARCHAR(255) NULL,
  ipAddressMask        VARCHAR(1024) NULL,
  ipType               INT          NULL,
  briInterfaceName     TEXT         NULL,
  status               INT          NULL,
  https                INT NOT NULL DEFAULT 0,
  snmp                 INT NOT NULL DEFAULT 0,
  ping                 INT NOT NULL DEFAULT 0,
  mtu                  INT          NULL,
  mac                  VARCHAR(64)  NULL,
  confer               INT          NULL,
  speed                INT          NULL,
  KEY (interfaceName)
) ENGINE=InnoDB;

-- ---- zones ----
CREATE TABLE SecurityAreas (
  securityAreaId INT NOT NULL AUTO_INCREMENT PRIMARY KEY,
  name           VARCHAR(255) NOT NULL,
  enable         INT NOT NULL DEFAULT 1
) ENGINE=InnoDB;

CREATE TABLE SecurityAreaInterfaces (
  securityAreaInterfaceId INT NOT NULL AUTO_INCREMENT PRIMARY KEY,
  securityAreaId          INT NOT NULL,
  interfaceName           VARCHAR(255) NOT NULL,
  KEY (securityAreaId)
) ENGINE=InnoDB;

CREATE TABLE AddressPools (
  addressPoolId INT NOT NULL AUTO_INCREMENT PRIMARY KEY,
  name          VARCHAR(255) NULL,
  interfaceName VARCHAR(255) NULL,
  ipAddress     VARCHAR(1024) NULL,
  type          INT NULL,
  enable        INT NOT NULL DEFAULT 0
) ENGINE=InnoDB;

-- Written by other processes of the appliance; the library reads and deletes.
CREATE TABLE Assets (
  assetId          INT NOT NULL AUTO_INCREMENT PRIMARY KEY,
  name             VARCHAR(255) NULL,
  ipAddress        VARCHAR(255) NULL,
  macAddress       VARCHAR(255) NULL,
  securityAreaName VARCHAR(255) NULL,
  enable           INT NOT NULL DEFAULT 1
) ENGINE=InnoDB;

-- ---- services ----
-- The service look-up joins rule table and service table with SELECT * and reads
-- the ports at cells 3 to 6 and the service name at cell 14: a rule table of 13
-- columns followed by a service table whose second column is the name.
CREATE TABLE Servers (
  serverId    INT NOT NULL AUTO_INCREMENT PRIMARY KEY,
  name        VARCHAR(255) NULL,
  description VARCHAR(1024) NULL
) ENGINE=InnoDB;

CREATE TABLE ServerRules (
  serverRuleId INT NOT NULL AUTO_INCREMENT PRIMARY KEY,
  serverId     INT NOT NULL,
  type         INT NULL,
  maxsrcport   VARCHAR(16) NULL,
  minsrcport   VARCHAR(16) NULL,
  maxdstport   VARCHAR(16) NULL,
  mindstport   VARCHAR(16) NULL,
  icmpType     INT NULL,
  icmpCode     INT NULL,
  ruleName     VARCHAR(255) NULL,
  enable       INT NOT NULL DEFAULT 1,
  createTime   TIMESTAMP NOT NULL DEFAULT CURRENT_TIMESTAMP,
  remark       VARCHAR(255) NULL,
  KEY (serverId)
) ENGINE=InnoDB;

CREATE TABLE PredefineServers (
  serverId    INT NOT NULL AUTO_INCREMENT PRIMARY KEY,
  name        VARCHAR(255) NULL,
  description VARCHAR(1024) NULL
) ENGINE=InnoDB;

CREATE TABLE PredefineServerRules (
  serverRuleId INT NOT NULL AUTO_INCREMENT PRIMARY KEY,
  serverId     INT NOT NULL,
  type         INT NULL,
  maxsrcport   VARCHAR(16) NULL,
  minsrcport   VARCHAR(16) NULL,
  maxdstport   VARCHAR(16) NULL,
  mindstport   VARCHAR(16) NULL,
  icmpType     INT NULL,
  icmpCode     INT NULL,
  ruleName     VARCHAR(255) NULL,
  enable       INT NOT NULL DEFAULT 1,
  createTime   TIMESTAMP NOT NULL DEFAULT CURRENT_TIMESTAMP,
  remark       VARCHAR(255) NULL,
  KEY (serverId)
) ENGINE=InnoDB;

-- Predefined services shipped with the appliance.
INSERT INTO PredefineServers (serverId, name, description) VALUES
  (1, 'HTTP', 'Hypertext Transfer Protocol'),
  (2, 'HTTPS', 'HTTP over TLS'),
  (3, 'DNS', 'Domain Name System'),
  (4, 'SSH', 'Secure Shell');
INSERT INTO PredefineServerRules (serverId, type, maxsrcport, minsrcport, maxdstport, mindstport) VALUES
  (1, 6, '65535', '0', '80', '80'),
  (2, 6, '65535', '0', '443', '443'),
  (3, 17, '65535', '0', '53', '53'),
  (3, 6, '65535', '0', '53', '53'),
  (4, 6, '65535', '0', '22', '22');

-- Columns in table order: the read by index relies on these positions.
CREATE TABLE RouteDatas (
  routeId          INT NOT NULL AUTO_INCREMENT PRIMARY KEY,
  destIpMask       VARCHAR(255) NULL,
  gateWayNextJump  VARCHAR(255) NULL,
  outInterfaceName VARCHAR(255) NULL,
  priority         INT NOT NULL DEFAULT 0,
  manageScope      INT NOT NULL DEFAULT 0
) ENGINE=InnoDB;

CREATE TABLE CPolicies (
  policyId       INT NOT NULL AUTO_INCREMENT PRIMARY KEY,
  name           VARCHAR(255) NULL,
  serviceAppType INT NOT NULL DEFAULT 0
) ENGINE=InnoDB;

-- ---- inspection ----
-- Column positions of Apps and Traits are read by the list getters.
CREATE TABLE Apps (
  appid         INT NOT NULL AUTO_INCREMENT PRIMARY KEY,
  name          VARCHAR(2048) NULL,
  type          INT NULL,
  serverPort    VARCHAR(2048) NULL,
  clientPort    VARCHAR(2048) NULL,
  inherit       INT NULL,
  predefineName VARCHAR(2048) NULL,
  description   TEXT NULL
) ENGINE=InnoDB;

CREATE TABLE Traits (
  traitid INT NOT NULL AUTO_INCREMENT PRIMARY KEY,
  appId   INT NULL,
  toffset VARCHAR(2048) NULL,
  trait   VARCHAR(2048) NULL,
  depth   VARCHAR(2048) NULL
) ENGINE=InnoDB;

CREATE TABLE DpiSubscriptions (
  subscriptionType   INT NOT NULL PRIMARY KEY,
  subscriptionStatus INT NULL
) ENGINE=InnoDB;

CREATE TABLE AssetProperties (
  assetPropertyId       INT NOT NULL AUTO_INCREMENT PRIMARY KEY,
  assetId               INT NOT NULL,
  assetPropertyType     INT NULL,
  assetPropertyStatus   INT NULL,
  assetPropertyIntValue INT NULL,
  KEY (assetId)
) ENGINE=InnoDB;

CREATE TABLE SessionControls (
  sessionControlId     INT NOT NULL AUTO_INCREMENT PRIMARY KEY,
  frequencyUpperLimit  INT NOT NULL DEFAULT 0,
  totalUpperLimit      INT NOT NULL DEFAULT 0,
  sourceIp             VARCHAR(64) NULL,
  targetIp             VARCHAR(64) NULL,
  sessionType          INT NULL,
  serviceApp           VARCHAR(64) NULL,
  enableLog            INT NULL,
  enableUpperLimitWarn INT NULL
) ENGINE=InnoDB;

CREATE TABLE PolicyToDpiWhitelist (
  id        INT NOT NULL AUTO_INCREMENT PRIMARY KEY,
  signame   VARCHAR(255) NULL,
  whitelist VARCHAR(255) NULL,
  sid       INT NULL
) ENGINE=InnoDB;

CREATE TABLE AntiAttacks (
  attackNameId INT NOT NULL PRIMARY KEY,
  attackType   INT NOT NULL,
  `switch`     INT NOT NULL DEFAULT 0,
  enable       INT NOT NULL DEFAULT 0,
  attackValue  INT NOT NULL DEFAULT 0,
  KEY (attackType)
) ENGINE=InnoDB;

-- ---- device ----
-- BasicSettings holds the device's settings row: its setters update every row.
CREATE TABLE BasicSettings (
  basicSettingId      INT NOT NULL AUTO_INCREMENT PRIMARY KEY,
  basicSettingType    INT NULL,
  w_modeType          INT NULL,
  w_enableSwitch      INT NULL,
  w_switchTime        VARCHAR(64) NULL,
  w_switchModeType    INT NULL,
  t_systemTime        VARCHAR(64) NULL,
  t_activateNtp       INT NULL,
  t_ntpIp             VARCHAR(255) NULL,
  l_syslogStorageType INT NULL
) ENGINE=InnoDB;

CREATE TABLE Syslogs (
  syslogId       INT NOT NULL AUTO_INCREMENT PRIMARY KEY,
  syslogIp       VARCHAR(255) NULL,
  syslogProtocol VARCHAR(8) NULL,
  syslogPort     INT NULL
) ENGINE=InnoDB;

-- Bypass units and remote-service strategy rules are provisioned with the
-- appliance (rows below); the library only updates them by name.
CREATE TABLE Bypasss (
  bypassName VARCHAR(255) NOT NULL PRIMARY KEY,
  powerOn    INT NOT NULL DEFAULT 0,
  appFault   INT NOT NULL DEFAULT 0
) ENGINE=InnoDB;

CREATE TABLE StrategyRules (
  strategyRuleName VARCHAR(255) NOT NULL PRIMARY KEY,
  disabled         INT NOT NULL DEFAULT 0,
  ruleData         VARCHAR(1024) NULL
) ENGINE=InnoDB;

INSERT INTO Bypasss (bypassName, powerOn, appFault) VALUES ('bypass0', 0, 0), ('bypass1', 0, 0);
INSERT INTO StrategyRules (strategyRuleName, disabled, ruleData) VALUES
  ('ssh', 1, NULL), ('https', 0, NULL), ('ping', 1, NULL);
