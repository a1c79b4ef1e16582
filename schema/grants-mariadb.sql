-- What the jobs may do in the suite's own database on MariaDB, and nothing else.
-- Run by the owner of the tables, in that database. The account is made before, with
-- CREATE USER orvane_jobs@'%' IDENTIFIED BY '...'.

GRANT SELECT ON PARAMETERS TO orvane_jobs@'%';
GRANT SELECT, DELETE ON PROSPECT TO orvane_jobs@'%';
GRANT SELECT, DELETE ON PREVIEW TO orvane_jobs@'%';
GRANT SELECT, DELETE, UPDATE (Q_STATUS) ON QUESTIONS TO orvane_jobs@'%';
GRANT SELECT, DELETE ON QUESTIONHISTORY TO orvane_jobs@'%';
GRANT SELECT, INSERT, DELETE ON TRANSACTIONS TO orvane_jobs@'%';
GRANT SELECT, DELETE ON DATAFILES TO orvane_jobs@'%';
GRANT SELECT ON CHATSESSIONS TO orvane_jobs@'%';
GRANT SELECT, DELETE, UPDATE (T2_DATE) ON REMINDER TO orvane_jobs@'%';
GRANT SELECT ON EMAIL TO orvane_jobs@'%';
GRANT SELECT ON I18NTEXT TO orvane_jobs@'%';
GRANT SELECT ON DATALABEL TO orvane_jobs@'%';
GRANT SELECT ON SITE TO orvane_jobs@'%';
GRANT SELECT ON PRODUCT TO orvane_jobs@'%';
GRANT SELECT ON OBJECT TO orvane_jobs@'%';
GRANT SELECT ON PROBLEM TO orvane_jobs@'%';
GRANT SELECT ON PRIORITY TO orvane_jobs@'%';
