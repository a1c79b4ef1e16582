-- The suite's catalogue database for MariaDB 10.6 or newer. The server runs with lower_case_table_names=1,
-- since the jobs do not care about the case of names. The collation tells upper from lower case and keeps
-- trailing blanks, as the other engines do.

-- Settings of the catalogue.
CREATE TABLE FAQPARAMETER (
  PARAMNAME  VARCHAR(255) NOT NULL,
  PARAMVALUE VARCHAR(255),
  PRIMARY KEY (PARAMNAME)
) ENGINE=InnoDB DEFAULT CHARACTER SET utf8mb4 COLLATE utf8mb4_nopad_bin;

-- Question categories, product categories and products, as the archive files and mails name them.
CREATE TABLE FAQCATEGORY (
  FAQCATEGORYID          INTEGER NOT NULL,
  FAQCATEGORYDESCRIPTION VARCHAR(255),
  PRIMARY KEY (FAQCATEGORYID)
) ENGINE=InnoDB DEFAULT CHARACTER SET utf8mb4 COLLATE utf8mb4_nopad_bin;

CREATE TABLE PRODUCTCATEGORY (
  CATEGORYID   INTEGER NOT NULL,
  CATEGORYNAME VARCHAR(255),
  PRIMARY KEY (CATEGORYID)
) ENGINE=InnoDB DEFAULT CHARACTER SET utf8mb4 COLLATE utf8mb4_nopad_bin;

CREATE TABLE PRODUCT (
  PRODUCTID          INTEGER NOT NULL,
  PRODUCTDESCRIPTION VARCHAR(255),
  PRIMARY KEY (PRODUCTID)
) ENGINE=InnoDB DEFAULT CHARACTER SET utf8mb4 COLLATE utf8mb4_nopad_bin;
