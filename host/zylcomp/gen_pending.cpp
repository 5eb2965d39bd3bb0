#include "host/zylcomp/genoutput.h"

// These sections are written by later work; until then they write nothing.
void GenOutput::outputCalculator() {}
void GenOutput::output() {}
void GenOutput::outputUserdef() {}
void GenOutput::outputCollation() {}
