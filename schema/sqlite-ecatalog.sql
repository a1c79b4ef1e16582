-- The suite's catalogue database for SQLite. Dates are kept as 'YYYY-MM-DD HH:MM:SS'; the declared types
-- tell the jobs what a column holds.

-- Settings of the catalogue.
CREATE TABLE FAQPARAMETER (
  PARAMNAME  VARCHAR(255) NOT NULL,
  PARAMVALUE VARCHAR(255),
  PRIMARY KEY (PARAMNAME)
);

-- Question categories, product categories and products, as the archive files and mails name them.
CREATE TABLE FAQCATEGORY (
  FAQCATEGORYID          INTEGER NOT NULL PRIMARY KEY,
  FAQCATEGORYDESCRIPTION VARCHAR(255)
);

CREATE TABLE PRODUCTCATEGORY (
  CATEGORYID   INTEGER NOT NULL PRIMARY KEY,
  CATEGORYNAME VARCHAR(255)
);

CREATE TABLE PRODUCT (
  PRODUCTID          INTEGER NOT NULL PRIMARY KEY,
  PRODUCTDESCRIPTION VARCHAR(255)
);
