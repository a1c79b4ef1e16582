<?xml version="1.0" encoding="UTF-8"?>
<!-- The page of the conclusion (mail 10): the request is closed. -->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
  <xsl:include href="mail_page.xsl"/>

  <xsl:variable name="kind" select="'conclusion'"/>
</xsl:stylesheet>
