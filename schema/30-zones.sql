USE firewall;
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
