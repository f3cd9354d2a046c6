-- A history as version 1 has it, with a little of everything in it.
CREATE TABLE marks(
    name TEXT NOT NULL PRIMARY KEY, value INTEGER NOT NULL) STRICT, WITHOUT ROWID;
CREATE TABLE parts(
    id INTEGER PRIMARY KEY, key TEXT NOT NULL UNIQUE, kind INTEGER NOT NULL,
    controller TEXT NOT NULL, "group" TEXT NOT NULL, part TEXT NOT NULL,
    enclosure TEXT NOT NULL, slot TEXT NOT NULL, model TEXT NOT NULL, serial TEXT NOT NULL) STRICT;
CREATE TABLE states(
    id INTEGER PRIMARY KEY, part INTEGER NOT NULL, since INTEGER NOT NULL,
    level INTEGER, words TEXT NOT NULL, place TEXT NOT NULL) STRICT;
CREATE INDEX states_of_part ON states(part, id);
CREATE TABLE counters(
    id INTEGER PRIMARY KEY, name TEXT NOT NULL UNIQUE) STRICT;
CREATE TABLE samples(
    day INTEGER NOT NULL, part INTEGER NOT NULL, counter INTEGER NOT NULL,
    second INTEGER NOT NULL, value REAL NOT NULL,
    PRIMARY KEY(day, part, counter, second)) STRICT, WITHOUT ROWID;
CREATE TABLE days(
    part INTEGER NOT NULL, counter INTEGER NOT NULL, day INTEGER NOT NULL,
    low REAL NOT NULL, high REAL NOT NULL, last REAL NOT NULL,
    PRIMARY KEY(part, counter, day)) STRICT, WITHOUT ROWID;
CREATE TABLE events(
    number INTEGER PRIMARY KEY AUTOINCREMENT, id TEXT NOT NULL UNIQUE,
    at INTEGER NOT NULL, text TEXT NOT NULL) STRICT;
CREATE TABLE deliveries(
    event INTEGER NOT NULL, channel TEXT NOT NULL,
    PRIMARY KEY(event, channel)) STRICT, WITHOUT ROWID;
CREATE TABLE watch(
    key TEXT NOT NULL PRIMARY KEY, text TEXT NOT NULL) STRICT, WITHOUT ROWID;
CREATE TABLE document(
    id INTEGER PRIMARY KEY CHECK(id = 1), text TEXT NOT NULL) STRICT;
PRAGMA application_id = 1380010308;
PRAGMA user_version = 1;

-- 22374 is 2031-04-05, 1933135200 its 06:00.
INSERT INTO marks VALUES('answered', 1933135800);
INSERT INTO parts VALUES(1, 'controller/0', 0, '0', '', '', '', '', 'Gate', '');
INSERT INTO parts VALUES(2, 'drive/A', 4, '0', '', 'PD0', '252', '0', 'TF6', 'A');
INSERT INTO states VALUES(1, 1, 1933135200, 0, '', 'controller 0');
INSERT INTO states VALUES(2, 2, 1933135200, 0, 'ONLINE', 'controller 0, PD0 in enclosure 252 slot 0');
INSERT INTO states VALUES(3, 2, 1933135500, 3, 'FAILED', 'controller 0, PD0 in enclosure 252 slot 0');
INSERT INTO states VALUES(4, 2, 1933135800, 0, 'ONLINE', 'controller 0, PD0 in enclosure 252 slot 0');
INSERT INTO counters VALUES(1, 'temperature');
INSERT INTO counters VALUES(2, 'media errors');
INSERT INTO days VALUES(2, 1, 22370, 30, 34, 32);
INSERT INTO days VALUES(2, 2, 22370, 0, 0, 0);
INSERT INTO days VALUES(2, 2, 22371, 0, 0, 0);
INSERT INTO samples VALUES(22374, 2, 1, 21600, 31);
INSERT INTO samples VALUES(22374, 2, 1, 21900, 32.5);
INSERT INTO samples VALUES(22374, 2, 2, 21600, 3);
INSERT INTO events VALUES(7, 'one', 1933135500, '{"id":"one","at":"2031-04-05T06:05:00Z","kind":"began","level":"CRITICAL","before":"OK","part_kind":"drive","rule":"state","controller":"0","group":null,"part":"PD0","enclosure":"252","slot":"0","model":"TF6","serial":"A","what":"FAILED","words":"drive A: FAILED","advice":null}');
INSERT INTO events VALUES(8, 'two', 1933135800, '{"id":"two","at":"2031-04-05T06:10:00Z","kind":"ended","level":"OK","before":"CRITICAL","part_kind":"drive","rule":"state","controller":"0","group":null,"part":"PD0","enclosure":"252","slot":"0","model":"TF6","serial":"A","what":"FAILED","words":"drive A: well again","advice":null}');
INSERT INTO deliveries VALUES(8, 'mail');
INSERT INTO watch VALUES('watch', '{"failures":0}');
INSERT INTO document VALUES(1, '<RAID version="1"/>');
