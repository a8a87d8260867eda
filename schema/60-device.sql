USE firewall;
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
