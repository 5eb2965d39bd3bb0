#include "host/zylcomp/genoutput.h"

// These sections are written by later work; until then they write nothing.
void GenOutput::outputCalculator() {}
void GenOutput::outputUserdef() {}
void GenOutput::outputCollation() {}

// The field API of a struct or class comes with the field functions.
void GenOutput::output(Struct&, Class*) {}
// The search functions of an index come with the index API.
void GenOutput::outputIndex(Class&, Index&) {}
// The fixed-part types and their copy functions come with fixed and direct access.
void GenOutput::genFixedStruct(Struct&) {}
void GenOutput::outputFixed(Struct&) {}
// XML and JSON access come with their own section.
void GenOutput::outputXmlRW(Class&) {}
void GenOutput::outputJsonW(Class&) {}
// The C# and Java class declarations come with the language bindings.
void GenOutput::outputClassHead(Class&) {}
void GenOutput::outputClassEnd(Class&) {}
