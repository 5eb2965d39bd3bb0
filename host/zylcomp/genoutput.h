// GenOutput: walks the finished schema and writes the generated files.
//
// This holds the generator's frame: its switches, its streams, the list of
// files a compile may write, and the fixed order of the output sections.
#pragma once

#include "foundation/mstring.h"
#include "foundation/mvector.h"
#include "foundation/outstream.h"
#include "frontend/diagnostics.h"
#include "host/zylcomp/fsize.h"

class Schema;
class FldLayout;

class GenOutput {
public:
    GenOutput(Schema& schema, bool outOfLine, bool dictFlagA, bool genXmlSchema, bool genCpp, bool genCs,
              bool genJava, bool cppProperties, IErrReporter* err, mstring const& outputDir,
              mstring const& csNamespace, mstring const& javaPackage, bool dictFlagB, bool genXml, bool genJson,
              bool jobFlag1, bool jobFlag2, int jobNum1, int jobNum2, bool usePrefix, bool classCodeOrigin,
              bool dllSpec);
    virtual ~GenOutput();
    GenOutput(GenOutput const&) = delete;
    GenOutput& operator=(GenOutput const&) = delete;

    void init();
    void run();
    void close();

    // Every path a compile of database `name` into `dir` can write, stale
    // ones of an earlier compile included; a failed compile removes them.
    static mvector<mstring> listAllOutputs(mstring const& name, mstring const& dir);

    mvector<mstring> const& createdFiles() const { return m_createdFiles; }

    // `size` rounded up to `align`; only 2, 4 and 8 round a number.
    static FSize alignInt(FSize size, FSize align);
    static FSize alignInt(FSize size, int align);

protected:
    virtual void createStreams(bool udf, bool coll);

public:
    // The overridable steps of the layout pass; the in-memory dictionary
    // replaces them to keep every size numeric.
    virtual void update_layout_strings(FldLayout& fld);
    // The size of `n` elements of size `elem`, as text.
    virtual FSize getArraySize(FSize& elem, int n);

protected:
    Schema* m_schema;
    IErrReporter* m_err;
    mstring m_outputDir;
    mstring m_csNamespace;
    mstring m_javaPackage;
    bool m_usePrefix;
    IOutStream* m_h = nullptr;
    IOutStream* m_c = nullptr;
    IOutStream* m_proto = nullptr;
    IOutStream* m_body = nullptr;
    IOutStream* m_protoEnd = nullptr;
    IOutStream* m_xml = nullptr;
    IOutStream* m_hpp = nullptr;
    IOutStream* m_cs = nullptr;
    IOutStream* m_java = nullptr;
    IOutStream* m_udf = nullptr;
    IOutStream* m_coll = nullptr;
    bool m_genCpp;
    bool m_genCs;
    bool m_genJava;
    bool m_cppProperties;
    bool m_outOfLine;
    bool m_dictFlagA;
    bool m_genXmlSchema;
    bool m_dictFlagB;
    bool m_genXml;
    bool m_genJson;
    bool m_jobFlag1;
    bool m_jobFlag2;
    int m_jobNum1;
    int m_jobNum2;
    bool m_classCodeOrigin;
    bool m_dllSpec;
    IOutStream* m_hppInline = nullptr;
    mvector<mstring> m_createdFiles;
};
