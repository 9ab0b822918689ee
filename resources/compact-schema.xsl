<?xml version="1.0" encoding="UTF-8"?>
<!-- Stages a schema file for the resource bundle: the same schema in fewer bytes. Comments,
     annotations, blank text, attributes at their default and the schema's version go; an import names
     its file alone, so that a schema which two others name by different locations is one schema,
     compiled once and without a warning. -->
<xsl:stylesheet version="1.0"
    xmlns:xsl="http://www.w3.org/1999/XSL/Transform"
    xmlns:xs="http://www.w3.org/2001/XMLSchema"
    exclude-result-prefixes="xs">
  <xsl:output method="xml" encoding="UTF-8" omit-xml-declaration="yes" indent="no"/>
  <xsl:strip-space elements="*"/>

  <xsl:template match="@*|node()">
    <xsl:copy>
      <xsl:apply-templates select="@*|node()"/>
    </xsl:copy>
  </xsl:template>

  <xsl:template match="comment()|processing-instruction()|xs:annotation"/>

  <xsl:template match="@use[.='optional'] | @minOccurs[.='1'] | @maxOccurs[.='1'] | xs:any/@namespace[.='##any']
                       | @processContents[.='strict'] | @mixed[.='false'] | @abstract[.='false']
                       | @elementFormDefault[.='unqualified'] | @attributeFormDefault[.='unqualified']
                       | xs:schema/@version"/>

  <xsl:template match="xs:import/@schemaLocation|xs:include/@schemaLocation">
    <xsl:attribute name="schemaLocation">
      <xsl:call-template name="last-path-component">
        <xsl:with-param name="location" select="."/>
      </xsl:call-template>
    </xsl:attribute>
  </xsl:template>

  <xsl:template name="last-path-component">
    <xsl:param name="location"/>
    <xsl:choose>
      <xsl:when test="contains($location, '/')">
        <xsl:call-template name="last-path-component">
          <xsl:with-param name="location" select="substring-after($location, '/')"/>
        </xsl:call-template>
      </xsl:when>
      <xsl:otherwise>
        <xsl:value-of select="$location"/>
      </xsl:otherwise>
    </xsl:choose>
  </xsl:template>
</xsl:stylesheet>
