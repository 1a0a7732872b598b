// Everything of the XML layer in one include.
#pragma once

#include "tqXml/ParseXmlStream.h"
#include "tqXml/XmlLibrary.h"
#include "tqXml/XmlSaveContext.h"
#include "tqXml/XmlSaxParserHandler.h"
