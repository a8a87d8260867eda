USE firewall;
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
