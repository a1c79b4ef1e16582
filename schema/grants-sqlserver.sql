-- What the jobs may do in the suite's own database on SQL Server, and nothing else.
-- Run by the owner of the tables, in that database. The account is made before, with
-- CREATE LOGIN orvane_jobs WITH PASSWORD = '...' and CREATE USER orvane_jobs FOR LOGIN orvane_jobs.

GRANT SELECT ON PARAMETERS TO orvane_jobs;
GRANT SELECT, DELETE ON PROSPECT TO orvane_jobs;
GRANT SELECT, DELETE ON PREVIEW TO orvane_jobs;
GRANT SELECT, DELETE ON QUESTIONS TO orvane_jobs;
GRANT UPDATE ON QUESTIONS (Q_STATUS) TO orvane_jobs;
GRANT SELECT, DELETE ON QUESTIONHISTORY TO orvane_jobs;
GRANT SELECT, INSERT, DELETE ON TRANSACTIONS TO orvane_jobs;
GRANT SELECT, DELETE ON DATAFILES TO orvane_jobs;
GRANT SELECT ON CHATSESSIONS TO orvane_jobs;
GRANT SELECT, DELETE ON REMINDER TO orvane_jobs;
GRANT UPDATE ON REMINDER (T2_DATE) TO orvane_jobs;
GRANT SELECT ON EMAIL TO orvane_jobs;
GRANT SELECT ON I18NTEXT TO orvane_jobs;
GRANT SELECT ON DATALABEL TO orvane_jobs;
GRANT SELECT ON SITE TO orvane_jobs;
GRANT SELECT ON PRODUCT TO orvane_jobs;
GRANT SELECT ON OBJECT TO orvane_jobs;
GRANT SELECT ON PROBLEM TO orvane_jobs;
GRANT SELECT ON PRIORITY TO orvane_jobs;
