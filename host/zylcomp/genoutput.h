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
class Struct;
class Class;
class Layout;
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

    // Layout pass: numbers the classes and places every field of every
    // struct and class in both object formats.
    void layout();
    // Lays out the oid struct ("ref"); its size in bytes, 0 after an error.
    int oid_layout(Struct& oid);
    // Column widths of the generated text; applies the name prefix.
    void calculateFormating();
    // `name` with the database name and "_" in front when prefixes are on,
    // unless it already begins with the database name.
    mstring nameWithPrefix(mstring const& name) const;

    // `size` rounded up to `align`; only 2, 4 and 8 round a number.
    static FSize alignInt(FSize size, FSize align);
    static FSize alignInt(FSize size, int align);

protected:
    virtual void createStreams(bool udf, bool coll);

public:
    // The overridable steps of the layout pass, in this order; the in-memory
    // dictionary replaces them to keep every size numeric. A derived class
    // that overrides one layout overload must bring the others in by `using`.

    // Lays out one struct or class; false when it was refused.
    virtual bool layout(Struct& s, int startOffset, Class* owner);
    // Offsets and totals of one Layout, in the order of its fields.
    virtual void layout(Layout& l, int startOffset, Struct* s);
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
    // Column widths, filled by calculateFormating.
    int m_structNameWidth = 0;
    int m_funcNameWidth2 = 0;
    int m_fieldNameWidth = 0;
    int m_typeNameWidth = 0;
    int m_retTypeWidth = 0;
    int m_funcNameWidth = 0;
};
