USE firewall;
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
