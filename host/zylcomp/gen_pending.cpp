#include "host/zylcomp/genoutput.h"

// These sections are written by later work; until then they write nothing.
void GenOutput::outputCalculator() {}
void GenOutput::outputUserdef() {}
void GenOutput::outputCollation() {}

// Fields the field API hands on come with the optional, spatial, blob and
// sequence section.
void GenOutput::output_optional_field(Struct&, Class*, Field&) {}
void GenOutput::output_spatial_field(Struct&, Class*, Field&) {}
void GenOutput::output_sequence_field(Struct&, Class*, Field&) {}
// The C# and Java types of scalar fields, and of vectors and arrays of
// scalars, come with the language bindings.
void GenOutput::outputScalarBinding(Field const&) {}
void GenOutput::outputElementBinding(Field const&) {}
// The fixed-part types and their copy functions come with fixed and direct access.
void GenOutput::genFixedStruct(Struct&) {}
void GenOutput::outputFixed(Struct&) {}
// XML and JSON access come with their own section.
void GenOutput::outputXmlRW(Class&) {}
void GenOutput::outputJsonW(Class&) {}
// The C# and Java class declarations come with the language bindings.
void GenOutput::outputClassHead(Class&) {}
void GenOutput::outputClassEnd(Class&) {}
