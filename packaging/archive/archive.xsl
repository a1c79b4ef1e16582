<?xml version="1.0" encoding="UTF-8"?>
<!-- Shows an archive file, of requests or of transactions, as a page; docs/archive-format.md tells how. -->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
  <xsl:output method="html" encoding="UTF-8" doctype-system="about:legacy-compat" indent="no"/>
  <xsl:key name="run" match="Archive" use="@ArchiveID"/>

  <xsl:template match="/*">
    <html lang="en">
      <head>
        <meta name="viewport" content="width=device-width, initial-scale=1"/>
        <title><xsl:call-template name="title"/></title>
        <style>
          :root { color-scheme: light dark; --text: #1d2733; --quiet: #5b6775; --line: #d9dfe6; --page: #fff; }
          @media (prefers-color-scheme: dark) { :root { --text: #e6ebf0; --quiet: #a3afbc; --line: #3a4552; --page: #14191f; } }
          body { font: 16px/1.5 system-ui, sans-serif; margin: 0 auto; max-width: 60rem; padding: 1rem; color: var(--text); background: var(--page); }
          h1 { font-size: 1.4rem; } h2 { font-size: 1.1rem; margin: 2rem 0 .5rem; }
          .note { color: var(--quiet); font-size: .9rem; }
          dl { display: grid; grid-template-columns: minmax(9rem, 14rem) 1fr; margin: 0; border-top: 1px solid var(--line); }
          dt, dd { margin: 0; padding: .3rem .5rem; border-bottom: 1px solid var(--line); overflow-wrap: anywhere; }
          dt { color: var(--quiet); } dd { white-space: pre-wrap; }
          .transaction { margin-top: 1rem; }
          @media (max-width: 36rem) { dl { grid-template-columns: 1fr; } dt { border: 0; padding-bottom: 0; } }
        </style>
      </head>
      <body>
        <h1><xsl:call-template name="title"/></h1>
        <p class="note">
          <xsl:value-of select="count(*[1]/SR)"/> request<xsl:if test="count(*[1]/SR) != 1">s</xsl:if>, archived in
          <xsl:value-of select="count(Archives/Archive)"/> run<xsl:if test="count(Archives/Archive) != 1">s</xsl:if>.
        </p>
        <xsl:apply-templates select="*[1]/SR"/>
        <h2>Runs</h2>
        <xsl:apply-templates select="Archives/Archive"/>
      </body>
    </html>
  </xsl:template>

  <xsl:template name="title">
    <xsl:choose>
      <xsl:when test="self::QuestionsArchive">Archived requests</xsl:when>
      <xsl:otherwise>History of archived requests</xsl:otherwise>
    </xsl:choose>
  </xsl:template>

  <xsl:template match="SR">
    <h2>Request <xsl:value-of select="@Q_ID"/></h2>
    <p class="note">
      <xsl:if test="@Q_STATUS != ''">Status <xsl:value-of select="@Q_STATUS"/>, </xsl:if>
      archived <xsl:value-of select="key('run', @ArchiveID)[1]/@DateArchived"/>
    </p>
    <xsl:choose>
      <xsl:when test="Transaction">
        <xsl:for-each select="Transaction"><div class="transaction"><xsl:call-template name="record"/></div></xsl:for-each>
      </xsl:when>
      <xsl:when test="*"><xsl:call-template name="record"/></xsl:when>
      <xsl:otherwise><p class="note">Nothing was recorded.</p></xsl:otherwise>
    </xsl:choose>
  </xsl:template>

  <xsl:template name="record">
    <dl>
      <xsl:for-each select="*[. != '']">
        <dt><xsl:value-of select="name()"/></dt>
        <dd><xsl:value-of select="."/></dd>
      </xsl:for-each>
    </dl>
  </xsl:template>

  <xsl:template match="Archive">
    <p><xsl:value-of select="@ArchiveID"/>: <xsl:value-of select="@DateArchived"/>, <xsl:value-of select="Means"/>
      <xsl:if test="ArchivedBy != ''"> (<xsl:value-of select="ArchivedBy"/>)</xsl:if>
      <xsl:if test="Comment != ''">, <xsl:value-of select="Comment"/></xsl:if></p>
  </xsl:template>
</xsl:stylesheet>
