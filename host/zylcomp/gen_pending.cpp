#include "host/zylcomp/genoutput.h"

// These sections are written by later work; until then they write nothing.
void GenOutput::outputCalculator() {}
void GenOutput::outputUserdef() {}
void GenOutput::outputCollation() {}

// The C# and Java types of scalar fields, of vectors and arrays of scalars
// and of sequences come with the language bindings.
void GenOutput::outputScalarBinding(Field const&) {}
void GenOutput::outputElementBinding(Field const&) {}
void GenOutput::outputSequenceBinding(Field const&) {}
// The fixed-part types and their copy functions come with fixed and direct access.
void GenOutput::genFixedStruct(Struct&) {}
void GenOutput::outputFixed(Struct&) {}
// XML and JSON access come with their own section.
void GenOutput::outputXmlRW(Class&) {}
void GenOutput::outputJsonW(Class&) {}
// The C# and Java class declarations come with the language bindings.
void GenOutput::outputClassHead(Class&) {}
void GenOutput::outputClassEnd(Class&) {}
