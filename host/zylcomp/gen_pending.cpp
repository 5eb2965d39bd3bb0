#include "host/zylcomp/genoutput.h"

// These sections are written by later work; until then they write nothing.
// The C# and Java types of scalar fields, of vectors and arrays of scalars
// and of sequences come with the language bindings.
void GenOutput::outputScalarBinding(Field const&) {}
void GenOutput::outputElementBinding(Field const&) {}
void GenOutput::outputSequenceBinding(Field const&) {}
// The C# and Java class declarations come with the language bindings.
void GenOutput::outputClassHead(Class&) {}
void GenOutput::outputClassEnd(Class&) {}
