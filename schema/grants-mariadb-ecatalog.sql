-- What the jobs may do in the catalogue database on MariaDB, and nothing else.
-- Run by the owner of the tables, in that database. The account is made before, with
-- CREATE USER orvane_jobs@'%' IDENTIFIED BY '...'.

GRANT SELECT ON FAQPARAMETER TO orvane_jobs@'%';
GRANT SELECT ON FAQCATEGORY TO orvane_jobs@'%';
GRANT SELECT ON PRODUCTCATEGORY TO orvane_jobs@'%';
GRANT SELECT ON PRODUCT TO orvane_jobs@'%';
