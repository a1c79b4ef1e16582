-- The suite's catalogue database for PostgreSQL 13 or newer. Names are unquoted on purpose: the jobs'
-- statements do not quote them either.

-- Settings of the catalogue.
CREATE TABLE FAQPARAMETER (
  PARAMNAME  VARCHAR(255) NOT NULL,
  PARAMVALUE VARCHAR(255),
  PRIMARY KEY (PARAMNAME)
);

-- Question categories, product categories and products, as the archive files and mails name them.
CREATE TABLE FAQCATEGORY (
  FAQCATEGORYID          INTEGER NOT NULL,
  FAQCATEGORYDESCRIPTION VARCHAR(255),
  PRIMARY KEY (FAQCATEGORYID)
);

CREATE TABLE PRODUCTCATEGORY (
  CATEGORYID   INTEGER NOT NULL,
  CATEGORYNAME VARCHAR(255),
  PRIMARY KEY (CATEGORYID)
);

CREATE TABLE PRODUCT (
  PRODUCTID          INTEGER NOT NULL,
  PRODUCTDESCRIPTION VARCHAR(255),
  PRIMARY KEY (PRODUCTID)
);
