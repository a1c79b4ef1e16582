-- What the jobs may do in the catalogue database on SQL Server, and nothing else.
-- Run by the owner of the tables, in that database. The account is made before, with
-- CREATE LOGIN orvane_jobs WITH PASSWORD = '...' and CREATE USER orvane_jobs FOR LOGIN orvane_jobs.

GRANT SELECT ON FAQPARAMETER TO orvane_jobs;
GRANT SELECT ON FAQCATEGORY TO orvane_jobs;
GRANT SELECT ON PRODUCTCATEGORY TO orvane_jobs;
GRANT SELECT ON PRODUCT TO orvane_jobs;
