// The generator's lifetime: construction, closing, and the list of files
// a compile may write.
#include "host/zylcomp/genoutput.h"

#include <sys/stat.h>

#include <cstring>

#include "foundation/ut.h"
#include "host/zylcomp/schema.h"

GenOutput::GenOutput(Schema& schema, bool outOfLine, bool dictFlagA, bool genXmlSchema, bool genCpp, bool genCs,
                     bool genJava, bool cppProperties, IErrReporter* err, mstring const& outputDir,
                     mstring const& csNamespace, mstring const& javaPackage, bool dictFlagB, bool genXml,
                     bool genJson, bool jobFlag1, bool jobFlag2, int jobNum1, int jobNum2, bool usePrefix,
                     bool classCodeOrigin, bool dllSpec)
    : m_schema(&schema),
      m_err(err),
      m_outputDir(outputDir),
      m_csNamespace(csNamespace),
      m_javaPackage(javaPackage),
      m_usePrefix(usePrefix),
      m_genCpp(genCpp),
      m_genCs(genCs),
      m_genJava(genJava),
      m_cppProperties(cppProperties),
      m_outOfLine(outOfLine),
      m_dictFlagA(dictFlagA),
      m_genXmlSchema(genXmlSchema),
      m_dictFlagB(dictFlagB),
      m_genXml(genXml),
      m_genJson(genJson),
      m_jobFlag1(jobFlag1),
      m_jobFlag2(jobFlag2),
      m_jobNum1(jobNum1),
      m_jobNum2(jobNum2),
      m_classCodeOrigin(classCodeOrigin),
      m_dllSpec(dllSpec) {}

GenOutput::~GenOutput() {
    close();
    // close() leaves these two open; they still belong to the generator.
    delete m_cs;
    delete m_java;
}

mvector<mstring> GenOutput::listAllOutputs(mstring const& name, mstring const& dir) {
    mvector<mstring> files;
    for (char const* suffix : {".h", ".c", ".hpp", ".xml"})
        files.push_back(UT::makefnm(dir, name + suffix));
    // An existing skeleton is never overwritten; its ".new" sibling is what
    // this compile would write.
    for (char const* suffix : {"_udf.c", "_coll.c"}) {
        mstring path = UT::makefnm(dir, name + suffix);
        struct stat st;
        if (::lstat(path.c_str(), &st) == 0)
            path += ".new";
        files.push_back(path);
    }
    return files;
}

void GenOutput::close() {
    for (IOutStream** s : {&m_h, &m_c, &m_xml, &m_hpp, &m_udf, &m_coll, &m_hppInline, &m_proto, &m_body,
                           &m_protoEnd}) {
        delete *s;
        *s = nullptr;
    }
    m_protoFile = nullptr;
    m_defFile = nullptr;
}
