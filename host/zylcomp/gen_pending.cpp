#include "host/zylcomp/genoutput.h"

// These sections are written by later work; until then they write nothing.
// Fields the field API hands on come with the vector and array section and
// with the optional, spatial, blob and sequence section.
void GenOutput::output_optional_field(Struct&, Class*, Field&) {}
void GenOutput::output_vector_field(Struct&, Class*, Field&) {}
void GenOutput::output_array_field(Struct&, Class*, Field&) {}
void GenOutput::output_spatial_field(Struct&, Class*, Field&) {}
void GenOutput::output_sequence_field(Struct&, Class*, Field&) {}
// The C# and Java types of scalar fields come with the language bindings.
void GenOutput::outputScalarBinding(Field const&) {}
// The C# and Java class declarations come with the language bindings.
void GenOutput::outputClassHead(Class&) {}
void GenOutput::outputClassEnd(Class&) {}
