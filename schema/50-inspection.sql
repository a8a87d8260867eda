USE firewall;
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
