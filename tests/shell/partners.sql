-- 200 partners and their counters by the hour over a week, as a site's own programs may keep them.
-- Every hour partner 1 sends 200 visitors, partner 2 199, and so on.
CREATE TABLE partners(id INTEGER PRIMARY KEY, domain TEXT, url TEXT, active INTEGER, title TEXT,
                      about TEXT, logo TEXT);
WITH RECURSIVE numbers(n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM numbers WHERE n < 200)
INSERT INTO partners
SELECT n, printf('partner-%03d.example', n), printf('http://www.partner-%03d.example/', n),
       n % 50 <> 0, printf('Partner "%d", the Größte', n), 'Texts, with commas; and another.',
       printf('logos/%d.png', n)
FROM numbers;

CREATE TABLE counters(partner INTEGER, hour INTEGER, rin INTEGER, uin INTEGER, out INTEGER,
                      clk INTEGER, cef INTEGER, ctt INTEGER, ctg INTEGER, rec INTEGER);
WITH RECURSIVE hours(h) AS (SELECT 1 UNION ALL SELECT h + 1 FROM hours WHERE h < 200)
INSERT INTO counters
SELECT id, 400000 + h, 201 - id, (201 - id) / 2, 150, 100, 40, 30, 20, 10 FROM partners, hours;
