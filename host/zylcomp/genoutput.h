// GenOutput: walks the finished schema and writes the generated files.
//
// The class is one generator; its member functions live in one file per
// output section. This header holds the frame (gen_frame.cpp, and
// genoutput.cpp for construction, closing and the file list): the
// switches, the streams, and the fixed order of the sections.
//
// Stream routing. Every generated C function is written as: head to
// m_proto, ";" to m_protoEnd, a line end to m_proto, body to m_body (see
// writeCFunction). Out of line that gives a prototype in {db}.h and the
// definition in {db}.c; inline it gives a definition in {db}.h alone.
// Streams of outputs that were not asked for are null streams, so sections
// write to them without testing.
#pragma once

#include <cstring>
#include <initializer_list>
#include <string>
#include <unordered_set>
#include <vector>

#include "foundation/mstring.h"
#include "foundation/mvector.h"
#include "foundation/outfile.h"
#include "foundation/outstream.h"
#include "host/zylcomp/keywords.h"
#include "frontend/diagnostics.h"
#include "host/zylcomp/fsize.h"

class Schema;
class Struct;
class Class;
class Index;
class Layout;
class FldLayout;
class Field;
class Subst;
class StrParams;
struct FieldRow;
struct AccessRow;
struct IndexRow;

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

    // Chooses the skeleton files that are needed and opens every stream.
    void init();
    // Writes all sections, always in the same order.
    void run();
    // Closes and forgets every stream but m_cs and m_java; safe to repeat.
    void close();

    // Every path a compile of database `name` into `dir` can write, stale
    // ones of an earlier compile included; a failed compile removes them.
    static mvector<mstring> listAllOutputs(mstring const& name, mstring const& dir);

    mvector<mstring> const& createdFiles() const { return m_createdFiles; }
    // The files written, each still beside its final name: the caller
    // moves them in place once the whole compile has succeeded.
    OutFileSet& outputFiles() { return m_outFiles; }
    // The first output that could not be created, or empty. Output stops
    // where it failed, and the caller ends the compile.
    mstring const& unopenedFile() const { return m_unopened; }
    // Closes m_cs and m_java as well, which close() leaves alone: a failed
    // compile closes every file it created before it removes them.
    void closeBindings();

    // `name` with "{db}_" in front when prefixing is on, unless it is longer
    // than the database name and begins with it already.
    mstring nameWithPrefix(mstring const& name) const;
    // name = nameWithPrefix(name), leaving a name that stays as it is alone.
    void addPrefix(mstring& name) const;
    // A generated function's name, marked for export when asked, padded to `width`.
    mstring MF(mstring const& name, int width) const;
    // A boxed section title in the generated text.
    static void head2(IOutStream* out, mstring const& title);
    static void outConstant(IOutStream* out, mstring const& name, int value);

    // Layout pass: numbers the classes and places every field of every
    // struct and class in both object formats.
    void layout();
    // Its two halves: the oid and every struct, then the classes. Between
    // them a class can be numbered and its owners known without placing it.
    void layoutTypes();
    void layoutClasses();
    // The code of every class, its place in the class set from 1.
    void numberClasses();
    // Where a class's objects begin: after its oid, rounded up to even.
    int classStart(Class const& c) const;
    // What placing class `c` tells the structs it holds by value, that
    // they belong to it, without placing it; the structs are placed.
    void registerOwners(Class& c);
    // Lays out the oid struct ("ref"); its size in bytes, 0 after an error.
    int oid_layout(Struct& oid);
    // Column widths of the generated text; applies the name prefix.
    void calculateFormating();
    // The schema as indented mark-up (the .xml output).
    void dump(IOutStream& out);

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
    // The sections, in the order run() calls them.
    void heading();
    void outputCalculator();
    void outputDictionary();
    void output();
    void outputUserdef();
    void outputCollation();
    void ending();

    // The common head of a generated C function: "{inl}{ret} {name}{params}",
    // the return type padded to m_retTypeWidth, the name to `nameWidth`.
    mstring functionHead(mstring const& name, mstring const& params, int nameWidth) const;
    // The same head up to the parameters appended to `out`, the name joined
    // of `name`; the caller appends the parameters.
    void appendHead(std::string& out, std::initializer_list<char const*> name, int nameWidth) const;
    // One generated C function through the routing streams; `body` brings
    // its own braces and trailing line ends.
    void writeCFunction(mstring const& head, mstring const& body);
    // The same through other streams, for functions that stand in {db}.c
    // whatever the mode.
    void writeCFunction(mstring const& head, mstring const& body, IOutStream* proto, IOutStream* protoEnd,
                        IOutStream* bodyOut);
    void writeCFunction(std::string const& head, std::string const& body);
    void writeCFunction(char const* head, size_t headLen, char const* body, size_t bodyLen);
    // One member of a C++ wrapper: "{decl}{member};" in the class body in
    // m_hpp, and "inline  ZYL_RET {scope}::{member}" with `body` (which
    // opens the brace; the closing one is added) in m_hppInline.
    void writeCppMember(char const* decl, mstring const& scope, mstring const& member, mstring const& body);
    void writeCppMember(char const* decl, mstring const& scope, std::string const& member, std::string const& body);
    // A class code as function bodies pass it: relative to the dictionary's
    // origin when the job asks for relative codes.
    mstring classCode(Class const& c) const;

    // Database-level output (gen_database.cpp): the parts of output().
    // The two that open Java files answer false when one cannot be made.
    bool outputEnums();
    void outputHandles();
    void outputStructHandles();
    bool outputStructs();
    // Opens the Java file of type `name` (spelled as alone() spells it)
    // into `slot` with its package and import lines.
    bool openJava(IOutStream*& slot, mstring const& name);

    // Class API (gen_class.cpp).
    // Creation, deletion, allocation settings, checkpoint, oid functions, _pack.
    void outputClassApi(Class& c);
    // One function of the class API, "{class}{suffix}", and its C++ member
    // unless `member` is null; the body gets its closing brace.
    void writeApiRow(Class& c, Subst& v, char const* suffix, char const* params, char const* body,
                     char const* memberDecl, char const* member, char const* memberBody);
    // Fields, cursors and indexes of a class.
    void output(Class& c);
    // The version walk a history index gives instead of a search API.
    void outputVersions(Class& c, Index const& idx);

    // Events and object identifiers (gen_events.cpp).
    void outputEvents(Class& c);
    void outputObjid();

    // Field API (gen_field.cpp). The functions of every field of a struct,
    // or of a class when `c` is the class itself.
    void output(Struct& s, Class* c);
    // Whole-object access of a direct struct: its stored image at once.
    void outputDirectAccess(Struct& s);
    // One field that is neither optional, vector nor array.
    void outputField(Struct& s, Class* c, Field& f);
    void outputScalarField(Struct& s, Class* c, Field& f, Subst& v);
    // The values the templates of field `f` draw on.
    Subst fieldSubst(Struct& s, Class* c, Field const& f) const;
    // Inline, a prototype of "{s}_{field}" for bodies that call it before
    // its definition; out of line all prototypes come first anyway.
    void declareAhead(Struct& s, mstring const& field, mstring const& params);
    // The same for the indicator functions of nullable field `f`.
    void declareIndicator(Struct& s, Field const& f);
    // The C function and the C++ member of each row whose condition holds.
    void writeFieldRows(Struct& s, Field const& f, Subst& v, FieldRow const* rows, unsigned n);
    // "{cf}_sequence", a column of a class declared with "sequences".
    void outputSequenceColumn(Struct& s, Subst& v, bool chars);
    // The C++ property member of a field: an object that reads and writes
    // the field by conversion and assignment.
    void outputProperty(Field const& f, Subst& v);
    // "{cf}_top": the keys of the objects a cursor walk rates highest.
    // `keys` is the parameter that receives them, `read` the statement that
    // reads one into keys[r].
    void genTopFunction(Struct& s, Subst& v, char const* keys, char const* read);
    void genCharTopFunction(Struct& s, mstring const& cf, Field const& f, char const* elem);
    void genVarCharTopFunction(Struct& s, mstring const& cf, Field const& f, char const* elem);

    // Vector and array fields (gen_vector.cpp).
    void output_vector_field(Struct& s, Class* c, Field& f);
    void output_array_field(Struct& s, Class* c, Field& f);
    // The element functions both kinds share, by the category of the element.
    void outputElementField(Struct& s, Class* c, Field& f, bool vector);

    // Optional, spatial and sequence fields (gen_optional.cpp).
    void output_optional_field(Struct& s, Class* c, Field& f);
    void output_spatial_field(Struct& s, Class* c, Field& f);
    void output_sequence_field(Struct& s, Class* c, Field& f);

    // Fixed and direct access (gen_fixed.cpp).
    // The C type of a direct struct, "{s}_d{suffix}".
    void direct_struct_output(Struct& s, mstring const& suffix);
    // The C type of the fixed-size part of a struct or class, "{s}_fixed",
    // and the two functions that read and write it in one call.
    void genFixedStruct(Struct& s);
    void outputFixed(Struct& s);

    // User-defined indexes and collations (gen_userdef.cpp; the calculator
    // and the two tables are sections of run()).
    // One function the user fills in: its prototype to {db}.h, a body that
    // returns 0 under `comment` to the skeleton file `file`.
    void writeSkeleton(IOutStream* file, mstring const& head, char const* comment);

    // XML and JSON access of a class (gen_xmljson.cpp).
    void outputXmlRW(Class& c);
    void outputJsonW(Class& c);
    // The C functions of `rows` and the C++ members that forward to them.
    void outputAccessRows(Class& c, AccessRow const* rows, unsigned n);

    // Index API (gen_index.cpp): the search functions of one index and
    // its nested C++ class.
    void outputIndex(Class& c, Index& idx);
    // One function of an index, "{ix}{op}", and its static member in `scope`.
    void writeIndexRow(IndexRow const& row, mstring const& ix, mstring const& scope, int width, Subst& v);

    // Java and C# bindings (gen_bindings.cpp). The declaration of a class:
    // its head, which opens its Java file, before the fields, its end after
    // them.
    void outputClassHead(Class& c);
    void outputClassEnd(Class& c);
    // The line of a scalar field, of a vector or array of scalars (an
    // array's with its dimension), and of a sequence, whose elements go by
    // the runtime's family `suffix` and, when they travel as characters,
    // have the size `elemSize`.
    void outputScalarBinding(Field const& f);
    void outputElementBinding(Field const& f);
    void outputSequenceBinding(Field const& f, mstring const& suffix, int elemSize);

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
    // The C++ wrappers' inline definitions, held back until the end of output().
    IOutStream* m_hppInline = nullptr;
    mvector<mstring> m_createdFiles;
    // Depth of the nested structs being placed right now.
    int m_layoutNesting = 0;
    OutFileSet m_outFiles;
    mstring m_unopened;
    // Column widths of the generated text, set by calculateFormating. The
    // starting values are what it gives for a schema without classes.
    int m_structNameWidth = 0;
    int m_funcNameWidth2 = 0;
    int m_fieldNameWidth = 0;
    int m_typeNameWidth = 0;
    int m_retTypeWidth = 8;
    int m_funcNameWidth = 20;
    // Structs whose fixed type, and whose fixed functions, are written
    // already: a nested struct's come first, whatever the set order. Sets,
    // not lists: every struct and class is looked up, and a list searched
    // each time cost the square of their count.
    std::unordered_set<Struct const*> v_fixedTypesWritten;
    std::unordered_set<Struct const*> v_fixedFunctionsWritten;
    // The C++ property members of the struct being written; its wrapper's
    // constructor points them at the object.
    mvector<mstring> v_cppProperty;
    // Buffers a function's texts are filled into, kept from one function to
    // the next so that their room is made once: the rows of every field
    // (writeFieldRows) and a C++ member's two texts (writeCppMember).
    std::string m_rowHead;
    std::string m_rowBody;
    std::string m_rowMember;
    std::string m_rowForward;
    std::string m_memberText;
    // The files the routing streams of createStreams lead to, so that
    // writeCFunction can write each file's part of a function at once: out
    // of line the prototype to {db}.h and the definition to {db}.c, inline
    // the definition alone to {db}.h (m_protoFile null). Both null when
    // the routing streams are not those (a derived createStreams).
    IOutStream* m_protoFile = nullptr;
    IOutStream* m_defFile = nullptr;
    std::string m_functionText;

private:
    // Opens `name` in the output directory into `slot` and records it.
    // False, with the path kept for unopenedFile(), when it cannot be
    // created; `slot` is null then.
    bool openOutput(IOutStream*& slot, mstring const& name);
    // Opens a skeleton the user fills in, "{db}{suffix}"; when one exists
    // already it is left alone and "{db}{suffix}.new" is written instead.
    bool openSkeleton(IOutStream*& slot, char const* suffix, char const* existsWarning);
    bool schemaHasSequences() const;
};

// The name class `name` bears in the C++ text; every class reference in
// the .hpp passes through here.
mstring hppClass(mstring const& name);

// The constant of Sequence.Type in the Java declarations for the elements
// of the runtime's sequence family `suffix` ("int4", "char"); empty for a
// family it does not know.
mstring java_seq_elem_type(mstring const& suffix);

// Indexes the compiler makes for itself (time-to-live, distribution, IoT)
// get no access functions.
bool indexIsHidden(Index const& idx);

// Fills the {name} places of a template of generated text. Only names that
// were set are replaced, so the braces of C text pass through.
//
// Names are literals and kept by address. The values live in one buffer
// that the Subst owns, each in a place that a shorter later value reuses:
// a template's names are set by the dozen and reset row after row, and a
// string of their own for each would cost a heap block every time.
class Subst {
public:
    Subst();
    Subst(Subst&&) = default;
    Subst& operator=(Subst&&) = default;
    Subst(Subst const&) = delete;
    Subst& operator=(Subst const&) = delete;

    // Inline, so that the length of a literal name is known when compiled.
    Subst& set(char const* name, char const* value) { return setText(name, value, std::strlen(value)); }
    Subst& set(char const* name, mstring const& value) { return set(name, value.c_str()); }
    // The value joined of `pieces`.
    Subst& set(char const* name, std::initializer_list<char const*> pieces);
    Subst& setNum(char const* name, long long value);
    // The value is `text` filled with the values as they stand.
    Subst& setFilled(char const* name, char const* text);
    Subst& setText(char const* name, char const* value, size_t n) {
        Slot& slot = slotOf(name, std::strlen(name));
        slot.keyword = false;
        return store(slot, value, n);
    }
    // A type name of the schema: where a text names the type alone ("{s} *")
    // it is written as alone() spells it; a name built from it ("{s}_d")
    // keeps its form.
    Subst& setType(char const* name, mstring const& value);

    mstring fill(char const* text) const;
    // Appends `text`, filled, to `out`.
    void fillTo(std::string& out, char const* text) const;
    // Writes `text`, filled, to `out`.
    void fillTo(IOutStream& out, char const* text) const;

private:
    struct Slot {
        char const* name;
        unsigned key;   // length, first and last character of the name
        int next;       // the next slot of the same bucket, or -1
        unsigned off;   // the value's place in m_values
        unsigned len;
        unsigned room;  // the length the place can take
        bool keyword;   // a type name that alone() escapes
    };
    static unsigned keyOf(char const* name, size_t n) {
        unsigned char const first = static_cast<unsigned char>(name[0]);
        unsigned char const last = static_cast<unsigned char>(name[n - 1]);
        return static_cast<unsigned>(n) << 16 | static_cast<unsigned>(first) << 8 | last;
    }
    static unsigned bucketOf(unsigned key) { return (key ^ (key >> 8) ^ (key >> 16)) & (kBuckets - 1); }
    // The slot of the name of `n` characters at `name`, or -1.
    int find(char const* name, size_t n) const;
    // The slot of the name, made when it is new.
    Slot& slotOf(char const* name, size_t n);
    // Gives the slot the value of `n` characters at `value`.
    Subst& store(Slot& slot, char const* value, size_t n);

    static constexpr unsigned kBuckets = 32;
    int m_bucket[kBuckets];
    std::vector<Slot> v_slot;
    std::string m_values;
    // Where setFilled fills before the value is stored.
    std::string m_scratch;
    // Where a text for a stream is filled; it keeps its room from one
    // text to the next.
    mutable std::string m_filled;
};

// One attribute of the schema dump: {name}="{value}" and a blank, with the
// angle brackets of the value turned into braces.
mstring A(mstring const& name, mstring const& value);

// The C type of `t` as a declaration names it: an enum's is its name, so
// it passes through alone(); a base type's is written as it is ("char").
mstring cTypeOf(Struct const& t);

// The texts gathered while the functions of one index are written, and the
// names of the fixed parameters, chosen so that no key parameter (those
// bear field names) hides them.
class StrParams {
public:
    // Picks m_trans, m_oper, m_handle and m_cursor, in that order.
    void setup();
    // `out` becomes the null-terminated list `names`.
    static void init_vs(mvector<mstring>& out, char const** names);
    // The first candidate that is no key parameter name; when all are,
    // the last one numbered from 0 up until the result is free.
    mstring choose(mvector<mstring> const& candidates) const;

    mstring m_formal;  // ", {type} {name}" per key parameter
    mstring m_actual;  // ", {name}" per key argument
    mstring m_fill;    // the lines that fill the key array
    mstring m_trans;
    mstring m_cursor;
    mstring m_oper;
    mstring m_handle;
    mvector<mstring> v_names;  // the key parameter names
    int m_count = 0;           // key parts gathered
};
