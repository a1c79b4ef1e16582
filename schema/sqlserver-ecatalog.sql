-- The suite's catalogue database for SQL Server 2019 or newer. The collation tells upper from lower case,
-- as the other engines do; DATETIME2 reads an ISO date whatever the date order of the session.

-- Settings of the catalogue.
CREATE TABLE FAQPARAMETER (
  PARAMNAME  NVARCHAR(255) COLLATE Latin1_General_100_BIN2 NOT NULL,
  PARAMVALUE NVARCHAR(255) COLLATE Latin1_General_100_BIN2,
  PRIMARY KEY (PARAMNAME)
);

-- Question categories, product categories and products, as the archive files and mails name them.
CREATE TABLE FAQCATEGORY (
  FAQCATEGORYID          INTEGER NOT NULL,
  FAQCATEGORYDESCRIPTION NVARCHAR(255) COLLATE Latin1_General_100_BIN2,
  PRIMARY KEY (FAQCATEGORYID)
);

CREATE TABLE PRODUCTCATEGORY (
  CATEGORYID   INTEGER NOT NULL,
  CATEGORYNAME NVARCHAR(255) COLLATE Latin1_General_100_BIN2,
  PRIMARY KEY (CATEGORYID)
);

CREATE TABLE PRODUCT (
  PRODUCTID          INTEGER NOT NULL,
  PRODUCTDESCRIPTION NVARCHAR(255) COLLATE Latin1_General_100_BIN2,
  PRIMARY KEY (PRODUCTID)
);
