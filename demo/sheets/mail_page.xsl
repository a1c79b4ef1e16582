<?xml version="1.0" encoding="UTF-8"?>
<!--
  The page of a mail about a service request; reminder.xsl and conclusion.xsl say what is special about theirs.

  Whatever customers and staff wrote is text here and is escaped on output. Only two pieces of markup inside that
  text are understood, letter for letter: <br> splits lines, and the heading of a history entry may stand between
  <b><font color=green> or <b><font color=red> and </font></b>. Captions arrive as parameters, named like the
  labels. The page is plain ASCII, so that it reads the same in whatever code page it is stored.
-->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">
  <xsl:output method="html" encoding="us-ascii" indent="no" doctype-system="about:legacy-compat"/>

  <xsl:param name="LBLQX3120"/><!-- Service request -->
  <xsl:param name="LBLQX3668"/><!-- Request details -->
  <xsl:param name="LBLQX3659"/><!-- Request number -->
  <xsl:param name="LBLQX3542"/><!-- Product category -->
  <xsl:param name="LBLQX3093"/><!-- Product -->
  <xsl:param name="LBLQX3033"/><!-- Category -->
  <xsl:param name="LBLQX3669"/><!-- Your details -->
  <xsl:param name="LBLQX3107"/><!-- Registered customer -->
  <xsl:param name="LBLQX3090"/><!-- E-mail -->
  <xsl:param name="LBLQX3067"/><!-- First name -->
  <xsl:param name="LBLQX3670"/><!-- Last name -->
  <xsl:param name="LBLQX3113"/><!-- Company -->
  <xsl:param name="LBLQX3194"/><!-- Telephone -->
  <xsl:param name="LBLQX3119"/><!-- Status -->
  <xsl:param name="LBLQX3045"/><!-- Subject -->
  <xsl:param name="LBLQX3690"/><!-- Questions and answers -->
  <xsl:param name="LBLQX3429"/><!-- Answer -->
  <xsl:param name="LBLQX3149"/><!-- Attachments -->
  <xsl:param name="LBLQX3692"/><!-- Installed equipment -->
  <xsl:param name="LBLQX3693"/><!-- Site -->
  <xsl:param name="LBLQX3118"/><!-- Modem -->
  <xsl:param name="LBLQX3011"/><!-- Country -->
  <xsl:param name="LBLQX3084"/><!-- Position -->
  <xsl:param name="LBLQX3199"/><!-- Fax -->
  <xsl:param name="LBLQX3197"/><!-- Problem -->
  <xsl:param name="LBLQX3112"/><!-- Contact information -->
  <xsl:param name="LBLQX3730"/><!-- Customer number -->
  <xsl:param name="LBLQX3196"/><!-- Priority -->
  <xsl:param name="LBLQX3195"/><!-- Machine -->
  <xsl:param name="LBLQX3201"/><!-- Contract -->
  <xsl:param name="LBLQX3867"/><!-- Warranty -->

  <!-- The language that the captions are in, told by the first of them; empty for one that is not known here.
       Readers aloud pronounce the page by it, and browsers choose the shapes of Chinese characters. -->
  <xsl:variable name="language">
    <xsl:choose>
      <xsl:when test="$LBLQX3120 = 'Service request'">en</xsl:when>
      <xsl:when test="$LBLQX3120 = 'Serviceaanvraag'">nl</xsl:when>
      <xsl:when test="$LBLQX3120 = 'Serviceanfrage'">de</xsl:when>
      <xsl:when test="$LBLQX3120 = '&#12469;&#12540;&#12499;&#12473;&#20381;&#38972;'">ja</xsl:when>
    </xsl:choose>
  </xsl:variable>

  <xsl:template match="/">
    <xsl:apply-templates select="MAIL"/>
  </xsl:template>

  <xsl:template match="MAIL">
    <html>
      <xsl:if test="$language != ''">
        <xsl:attribute name="lang">
          <xsl:value-of select="$language"/>
        </xsl:attribute>
      </xsl:if>
      <head>
        <!-- The page shows text and loads nothing. -->
        <meta http-equiv="Content-Security-Policy" content="default-src 'none'; style-src 'unsafe-inline'"/>
        <meta name="viewport" content="width=device-width, initial-scale=1"/>
        <meta name="color-scheme" content="light dark"/>
        <title>
          <xsl:value-of select="concat($LBLQX3120, ' ', CASEID)"/>
        </title>
        <style>
          <xsl:call-template name="style"/>
        </style>
      </head>
      <body class="{$kind}">
        <main>
          <header>
            <p class="number">
              <xsl:value-of select="concat($LBLQX3120, ' ', CASEID)"/>
            </p>
            <h1>
              <xsl:value-of select="DESCRIPTION"/>
              <xsl:if test="string(DESCRIPTION) = ''">
                <xsl:value-of select="$LBLQX3120"/>
              </xsl:if>
            </h1>
            <xsl:if test="string(QSTATUS[1]) != ''">
              <p class="status">
                <xsl:value-of select="QSTATUS[1]"/>
              </p>
            </xsl:if>
          </header>
          <xsl:apply-templates select="QAHEADER"/>
          <xsl:apply-templates select="ATTACHMENTS"/>
          <section>
            <h2>
              <xsl:value-of select="$LBLQX3668"/>
            </h2>
            <dl>
              <xsl:apply-templates select="CASEID[. != '']" mode="row">
                <xsl:with-param name="caption" select="$LBLQX3659"/>
              </xsl:apply-templates>
              <xsl:apply-templates select="DESCRIPTION[. != '']" mode="row">
                <xsl:with-param name="caption" select="$LBLQX3045"/>
              </xsl:apply-templates>
              <xsl:apply-templates select="QSTATUS[1][. != '']" mode="row">
                <xsl:with-param name="caption" select="$LBLQX3119"/>
              </xsl:apply-templates>
              <xsl:apply-templates select="PRODUCTCATEGORY[. != '']" mode="row">
                <xsl:with-param name="caption" select="$LBLQX3542"/>
              </xsl:apply-templates>
              <xsl:apply-templates select="ECPRODUCT[. != '']" mode="row">
                <xsl:with-param name="caption" select="$LBLQX3093"/>
              </xsl:apply-templates>
              <xsl:apply-templates select="FAQCATEGORIES[. != '']" mode="row">
                <xsl:with-param name="caption" select="$LBLQX3033"/>
              </xsl:apply-templates>
            </dl>
          </section>
          <xsl:apply-templates select="INSTALLEDBASE"/>
          <xsl:apply-templates select="CUSTOMER"/>
        </main>
      </body>
    </html>
  </xsl:template>

  <!-- The history, oldest first. -->
  <xsl:template match="QAHEADER">
    <xsl:if test="QALINE">
      <section>
        <h2>
          <xsl:value-of select="$LBLQX3690"/>
        </h2>
        <xsl:apply-templates select="QALINE"/>
      </section>
    </xsl:if>
  </xsl:template>

  <!-- The markup around an entry's heading tells what it is: 21 or 19 characters open it, 11 close it. -->
  <xsl:template match="QALINE">
    <xsl:variable name="heading" select="string(QADATE)"/>
    <xsl:variable name="length" select="string-length($heading)"/>
    <xsl:variable name="closed" select="substring($heading, $length - 10) = '&lt;/font&gt;&lt;/b&gt;'"/>
    <xsl:choose>
      <xsl:when test="$closed and starts-with($heading, '&lt;b&gt;&lt;font color=green&gt;')">
        <div class="entry answer">
          <h3>
            <xsl:value-of select="substring($heading, 22, $length - 32)"/>
          </h3>
          <xsl:call-template name="entry-text"/>
        </div>
      </xsl:when>
      <xsl:when test="$closed and starts-with($heading, '&lt;b&gt;&lt;font color=red&gt;')">
        <div class="entry question">
          <h3>
            <xsl:value-of select="substring($heading, 20, $length - 30)"/>
          </h3>
          <xsl:call-template name="entry-text"/>
        </div>
      </xsl:when>
      <xsl:otherwise>
        <div class="entry ">
          <h3>
            <xsl:value-of select="$heading"/>
          </h3>
          <xsl:call-template name="entry-text"/>
        </div>
      </xsl:otherwise>
    </xsl:choose>
  </xsl:template>

  <xsl:template name="entry-text">
    <p class="text">
      <xsl:call-template name="lines">
        <xsl:with-param name="text" select="string(QATEXT)"/>
      </xsl:call-template>
    </p>
  </xsl:template>

  <!-- The text with a line break for each <br>. A long text is halved, which keeps the recursion shallow however many
       lines there are. -->
  <xsl:template name="lines">
    <xsl:param name="text"/>
    <xsl:choose>
      <xsl:when test="not(contains($text, '&lt;br&gt;'))">
        <xsl:value-of select="$text"/>
      </xsl:when>
      <xsl:when test="string-length($text) &lt; 1000">
        <xsl:value-of select="substring-before($text, '&lt;br&gt;')"/>
        <br/>
        <xsl:call-template name="lines">
          <xsl:with-param name="text" select="substring-after($text, '&lt;br&gt;')"/>
        </xsl:call-template>
      </xsl:when>
      <xsl:otherwise>
        <xsl:variable name="half" select="floor(string-length($text) div 2)"/>
        <xsl:variable name="rest" select="substring($text, $half + 1)"/>
        <xsl:choose>
          <xsl:when test="contains($rest, '&lt;br&gt;')">
            <xsl:call-template name="lines">
              <xsl:with-param name="text" select="concat(substring($text, 1, $half), substring-before($rest, '&lt;br&gt;'))"/>
            </xsl:call-template>
            <br/>
            <xsl:call-template name="lines">
              <xsl:with-param name="text" select="substring-after($rest, '&lt;br&gt;')"/>
            </xsl:call-template>
          </xsl:when>
          <!-- Up to three characters of the mark may lie behind the middle. -->
          <xsl:otherwise>
            <xsl:call-template name="lines">
              <xsl:with-param name="text" select="substring($text, 1, $half + 3)"/>
            </xsl:call-template>
            <xsl:value-of select="substring($text, $half + 4)"/>
          </xsl:otherwise>
        </xsl:choose>
      </xsl:otherwise>
    </xsl:choose>
  </xsl:template>

  <xsl:template match="ATTACHMENTS">
    <xsl:if test="*">
      <section>
        <h2>
          <xsl:value-of select="$LBLQX3149"/>
        </h2>
        <dl>
          <xsl:apply-templates select="QATT[. != '']" mode="row">
            <xsl:with-param name="caption" select="$LBLQX3120"/>
          </xsl:apply-templates>
          <xsl:apply-templates select="AATT[. != '']" mode="row">
            <xsl:with-param name="caption" select="$LBLQX3429"/>
          </xsl:apply-templates>
        </dl>
      </section>
    </xsl:if>
  </xsl:template>

  <xsl:template match="INSTALLEDBASE">
    <xsl:if test="* != ''">
      <section>
        <h2>
          <xsl:value-of select="$LBLQX3692"/>
        </h2>
        <dl>
          <xsl:apply-templates select="BPNO[. != '']" mode="row">
            <xsl:with-param name="caption" select="$LBLQX3730"/>
          </xsl:apply-templates>
          <xsl:if test="SITE != ''">
            <xsl:call-template name="row">
              <xsl:with-param name="caption" select="$LBLQX3693"/>
              <xsl:with-param name="value" select="string(SITE[1])"/>
              <xsl:with-param name="code" select="string(SITE[2])"/>
            </xsl:call-template>
          </xsl:if>
          <xsl:if test="PRODUCT != ''">
            <xsl:call-template name="row">
              <xsl:with-param name="caption" select="$LBLQX3195"/>
              <xsl:with-param name="value" select="string(PRODUCT[1])"/>
              <xsl:with-param name="code" select="string(PRODUCT[2])"/>
            </xsl:call-template>
          </xsl:if>
          <xsl:if test="PROBLEMCODE != ''">
            <xsl:call-template name="row">
              <xsl:with-param name="caption" select="$LBLQX3197"/>
              <xsl:with-param name="value" select="string(PROBLEMCODE[1])"/>
              <xsl:with-param name="code" select="string(PROBLEMCODE[2])"/>
            </xsl:call-template>
          </xsl:if>
          <xsl:if test="PROBLEMPRIORITY != ''">
            <xsl:call-template name="row">
              <xsl:with-param name="caption" select="$LBLQX3196"/>
              <xsl:with-param name="value" select="string(PROBLEMPRIORITY[1])"/>
              <xsl:with-param name="code" select="string(PROBLEMPRIORITY[2])"/>
            </xsl:call-template>
          </xsl:if>
          <xsl:if test="CONTRACT != ''">
            <xsl:call-template name="row">
              <xsl:with-param name="caption" select="$LBLQX3201"/>
              <xsl:with-param name="value" select="string(CONTRACT[2])"/>
              <xsl:with-param name="code" select="string(CONTRACT[1])"/>
            </xsl:call-template>
          </xsl:if>
          <xsl:if test="WARRANTY != ''">
            <xsl:call-template name="row">
              <xsl:with-param name="caption" select="$LBLQX3867"/>
              <xsl:with-param name="value" select="string(WARRANTY[2])"/>
              <xsl:with-param name="code" select="string(WARRANTY[1])"/>
            </xsl:call-template>
          </xsl:if>
        </dl>
      </section>
    </xsl:if>
  </xsl:template>

  <xsl:template match="CUSTOMER">
    <section>
      <h2>
        <xsl:value-of select="$LBLQX3669"/>
      </h2>
      <xsl:if test="REGISTERED">
        <p class="badge">
          <xsl:value-of select="$LBLQX3107"/>
        </p>
      </xsl:if>
      <dl>
        <!-- Japanese names begin with the family. -->
        <xsl:apply-templates select="LASTNAME[. != '' and $language = 'ja']" mode="row">
          <xsl:with-param name="caption" select="$LBLQX3670"/>
        </xsl:apply-templates>
        <xsl:apply-templates select="FIRSTNAME[. != '']" mode="row">
          <xsl:with-param name="caption" select="$LBLQX3067"/>
        </xsl:apply-templates>
        <xsl:apply-templates select="LASTNAME[. != '' and $language != 'ja']" mode="row">
          <xsl:with-param name="caption" select="$LBLQX3670"/>
        </xsl:apply-templates>
        <xsl:apply-templates select="POSITION[. != '']" mode="row">
          <xsl:with-param name="caption" select="$LBLQX3084"/>
        </xsl:apply-templates>
        <xsl:apply-templates select="COMPANY[. != '']" mode="row">
          <xsl:with-param name="caption" select="$LBLQX3113"/>
        </xsl:apply-templates>
        <xsl:apply-templates select="COUNTRY[. != '']" mode="row">
          <xsl:with-param name="caption" select="$LBLQX3011"/>
        </xsl:apply-templates>
        <xsl:apply-templates select="EMAIL[. != '']" mode="row">
          <xsl:with-param name="caption" select="$LBLQX3090"/>
        </xsl:apply-templates>
        <xsl:apply-templates select="PHONE[. != '']" mode="row">
          <xsl:with-param name="caption" select="$LBLQX3194"/>
        </xsl:apply-templates>
        <xsl:apply-templates select="FAX[. != '']" mode="row">
          <xsl:with-param name="caption" select="$LBLQX3199"/>
        </xsl:apply-templates>
        <xsl:apply-templates select="MODEM[. != '']" mode="row">
          <xsl:with-param name="caption" select="$LBLQX3118"/>
        </xsl:apply-templates>
        <xsl:apply-templates select="CONTACTINFO[. != '']" mode="row">
          <xsl:with-param name="caption" select="$LBLQX3112"/>
        </xsl:apply-templates>
      </dl>
    </section>
  </xsl:template>

  <!-- A caption with its value. -->
  <xsl:template match="*" mode="row">
    <xsl:param name="caption"/>
    <div class="row">
      <dt>
        <xsl:value-of select="$caption"/>
      </dt>
      <dd>
        <xsl:value-of select="."/>
      </dd>
    </div>
  </xsl:template>

  <!-- ... and the code of the value behind it; without a value the code alone. -->
  <xsl:template name="row">
    <xsl:param name="caption"/>
    <xsl:param name="value"/>
    <xsl:param name="code"/>
    <div class="row">
      <dt>
        <xsl:value-of select="$caption"/>
      </dt>
      <dd>
        <xsl:value-of select="$value"/>
        <xsl:choose>
          <xsl:when test="$value = ''">
            <xsl:value-of select="$code"/>
          </xsl:when>
          <xsl:when test="$code != '' and $code != $value">
            <xsl:text> </xsl:text>
            <span class="code">
              <xsl:value-of select="$code"/>
            </span>
          </xsl:when>
        </xsl:choose>
      </dd>
    </div>
  </xsl:template>

  <xsl:template name="style">
    <xsl:text>
:root { color-scheme: light dark; --ink: #1d2733; --soft: #5d6b7a; --line: #dfe5ec; --card: #ffffff;
  --ground: #f1f4f8; --accent: #1f5fbf; --tint: #e8f0fc; --green: #1a7a3c; --red: #b3261e; }
body.conclusion { --accent: #46566a; --tint: #e9edf2; }
@media (prefers-color-scheme: dark) {
  :root { --ink: #e6ebf1; --soft: #9fadbc; --line: #303b47; --card: #1b232c; --ground: #11171d; --accent: #6ea3f2;
    --tint: #1d2c44; --green: #63c788; --red: #f08a82; }
  body.conclusion { --accent: #a9b8c9; --tint: #2a3440; }
}
* { box-sizing: border-box; }
body { margin: 0; background: var(--ground); color: var(--ink); font: 16px/1.5 -apple-system, "Segoe UI", Roboto,
  "Helvetica Neue", Arial, "Hiragino Sans", "Yu Gothic", "Noto Sans CJK JP", sans-serif; -webkit-text-size-adjust: 100%; }
main { max-width: 44rem; margin: 0 auto; padding: 2rem 1rem 3rem; }
header, section { background: var(--card); border: 1px solid var(--line); border-radius: 10px; padding: 1.25rem 1.5rem;
  margin-bottom: 1rem; overflow-wrap: anywhere; }
header { border-top: 5px solid var(--accent); }
h1 { font-size: 1.5rem; line-height: 1.25; margin: .15rem 0 .75rem; }
h2 { font-size: .8125rem; letter-spacing: .04em; text-transform: uppercase; color: var(--soft); margin: 0 0 .75rem; }
h3 { font-size: .875rem; margin: 0 0 .35rem; color: var(--soft); }
p { margin: 0; }
.number { color: var(--soft); font-size: .9375rem; }
.status, .badge { display: inline-block; background: var(--tint); color: var(--accent); font-size: .875rem;
  font-weight: 600; border-radius: 1rem; padding: .15rem .75rem; }
.badge { margin-bottom: .6rem; }
.entry { border-left: 4px solid var(--line); padding: .1rem 0 .1rem 1rem; margin: 0 0 1.25rem; }
.entry:last-child { margin-bottom: 0; }
.answer { border-color: var(--green); }
.answer h3 { color: var(--green); }
.question { border-color: var(--red); }
.question h3 { color: var(--red); }
.text { white-space: pre-wrap; }
dl { margin: 0; }
.row { display: flex; gap: 1rem; padding: .4rem 0; border-top: 1px solid var(--line); }
.row:first-child { border-top: 0; padding-top: 0; }
.row:last-child { padding-bottom: 0; }
dt { flex: 0 0 12rem; color: var(--soft); }
dd { flex: 1; margin: 0; min-width: 0; white-space: pre-wrap; }
.code { color: var(--soft); font-size: .875rem; }
@media (max-width: 34rem) {
  main { padding: .75rem .5rem 2rem; }
  header, section { padding: 1rem; border-radius: 8px; }
  h1 { font-size: 1.3rem; }
  .row { display: block; }
  dt { font-size: .8125rem; }
}
@media print { body { background: none; } header, section { break-inside: avoid; } }
</xsl:text>
  </xsl:template>
</xsl:stylesheet>
