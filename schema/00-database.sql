-- Reference schema of the appliance's configuration database, as the library's
-- statements use it. The library never creates tables; this schema exists for
-- the tests, the demo and new installations.
DROP DATABASE IF EXISTS firewall;
CREATE DATABASE firewall DEFAULT CHARACTER SET utf8mb4;
