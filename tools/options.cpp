#include "options.h"

#include <cstdlib>
#include <cstring>

namespace {

struct Flag {
    char const* shortName;  // may be null
    char const* longName;
    bool CliOptions::*member;
    bool value;
};

const Flag kFlags[] = {
    {"-c", "--compiled-functions", &CliOptions::compiledFunctions, true},
    {nullptr, "--cpp", &CliOptions::cpp, true},
    {nullptr, "--cs", &CliOptions::cs, true},
    {nullptr, "--java", &CliOptions::java, true},
    {nullptr, "--cpp-runtime-header", &CliOptions::cppRuntimeHeader, true},
    {nullptr, "--xml-schema", &CliOptions::xmlSchema, true},
    {nullptr, "--xml-access", &CliOptions::xmlAccess, true},
    {nullptr, "--json-access", &CliOptions::jsonAccess, true},
    {nullptr, "--keep-field-order", &CliOptions::keepFieldOrder, true},
    {nullptr, "--wide-offsets", &CliOptions::wideOffsets, true},
    {nullptr, "--dynamic-dict", &CliOptions::dynamicDict, true},
    {nullptr, "--compact", &CliOptions::compact, true},
    {nullptr, "--persistent", &CliOptions::persistent, true},
    {nullptr, "--nonatomic", &CliOptions::atomic, false},
    {nullptr, "--sql-reserved-words", &CliOptions::sqlReservedWords, true},
    {nullptr, "--prefix-names", &CliOptions::prefixNames, true},
    {nullptr, "--relative-class-codes", &CliOptions::relativeClassCodes, true},
    {nullptr, "--dll-spec", &CliOptions::dllSpec, true},
    {nullptr, "--dump-dictionary", &CliOptions::dumpDictionary, true},
    {"-q", "--quiet", &CliOptions::quiet, true},
};

enum ValueKind { OutputDir, IncludeDir, CsNamespace, JavaPackage, SizeofSize, Hide, DepFile, DiagFormat, CompareWith };

struct ValueOption {
    char const* shortName;
    char const* longName;
    ValueKind kind;
};

const ValueOption kValueOptions[] = {
    {"-o", "--output-dir", OutputDir},     {"-I", "--include-dir", IncludeDir},
    {nullptr, "--cs-namespace", CsNamespace}, {nullptr, "--java-package", JavaPackage},
    {nullptr, "--sizeof-size", SizeofSize},   {nullptr, "--hide", Hide},
    {nullptr, "--depfile", DepFile},          {nullptr, "--diagnostics-format", DiagFormat},
    {nullptr, "--compare", CompareWith},
};

bool is(char const* arg, char const* name) { return name != nullptr && std::strcmp(arg, name) == 0; }

CliOptions fail(CliOptions& o, std::string const& why) {
    o.action = CliOptions::UsageError;
    o.error = why;
    return o;
}

bool setValue(CliOptions& o, ValueKind kind, std::string const& name, std::string const& value) {
    switch (kind) {
    case OutputDir: o.outputDir = value; return true;
    case IncludeDir: o.includeDirs.push_back(value); return true;
    case CsNamespace: o.csNamespace = value; return true;
    case JavaPackage: o.javaPackage = value; return true;
    case Hide: o.hiddenClasses.push_back(value); return true;
    case DepFile: o.depFile = value; return true;
    case DiagFormat:
        if (value != "classic" && value != "gnu" && value != "json") {
            o.error = "option " + name + " needs classic, gnu or json, not '" + value + "'";
            return false;
        }
        o.diagnosticsFormat = value;
        o.diagnosticsJson = value == "json";
        return true;
    case CompareWith: o.compareWith = value; return true;
    case SizeofSize: {
        char* end = nullptr;
        long n = std::strtol(value.c_str(), &end, 10);
        if (value.empty() || *end != '\0' || n < 1 || n > 64) {
            o.error = "option " + name + " needs a size in bytes from 1 to 64, not '" + value + "'";
            return false;
        }
        o.sizeofSize = static_cast<int>(n);
        return true;
    }
    }
    return false;
}

}  // namespace

CliOptions parseOptions(int argc, char const* const* argv) {
    CliOptions o;
    bool onlyFiles = false;
    for (int i = 1; i < argc; i++) {
        char const* arg = argv[i];
        if (onlyFiles || arg[0] != '-' || arg[1] == '\0') {
            if (!o.schemaFile.empty())
                return fail(o, std::string("only one schema file may be given; found '") + o.schemaFile +
                                   "' and '" + arg + "'");
            o.schemaFile = arg;
            continue;
        }
        if (is(arg, "--")) {
            onlyFiles = true;
            continue;
        }
        if (is(arg, "-h") || is(arg, "--help")) {
            o.action = CliOptions::Help;
            return o;
        }
        if (is(arg, "-V") || is(arg, "--version")) {
            o.action = CliOptions::Version;
            return o;
        }
        if (is(arg, "--hide-all")) {
            // One empty name stands for every class.
            o.hiddenClasses.push_back("");
            continue;
        }
        bool known = false;
        for (Flag const& f : kFlags) {
            if (is(arg, f.shortName) || is(arg, f.longName)) {
                o.*(f.member) = f.value;
                known = true;
                break;
            }
        }
        if (known)
            continue;
        std::string a = arg;
        for (ValueOption const& v : kValueOptions) {
            std::string value;
            std::string name;
            if (is(arg, v.shortName) || is(arg, v.longName)) {
                name = arg;
                if (i + 1 >= argc)
                    return fail(o, "option " + name + " needs a value");
                value = argv[++i];
            } else if (a.compare(0, std::strlen(v.longName) + 1, std::string(v.longName) + "=") == 0) {
                name = v.longName;
                value = a.substr(std::strlen(v.longName) + 1);
            } else if (v.shortName && a.size() > 2 && a.compare(0, 2, v.shortName) == 0) {
                name = v.shortName;
                value = a.substr(2);
            } else {
                continue;
            }
            if (!setValue(o, v.kind, name, value))
                return fail(o, o.error);
            known = true;
            break;
        }
        if (!known)
            return fail(o, "unknown option '" + a + "'");
    }
    if (o.schemaFile.empty())
        return fail(o, "no schema file given");
    // It compiles as the run-time entry does, which searches one directory.
    if (o.dumpDictionary && o.includeDirs.size() > 1)
        return fail(o, "--dump-dictionary takes one include directory, not " + std::to_string(o.includeDirs.size()));
    return o;
}

char const* usageText() { return "usage: zylcomp [OPTIONS] SCHEMA-FILE\nTry 'zylcomp --help' for the options.\n"; }

char const* helpText() {
    return "usage: zylcomp [OPTIONS] SCHEMA-FILE\n"
           "\n"
           "Compiles a database schema into its dictionary and typed access interface:\n"
           "{db}.h and {db}.c, and on request the files the options below ask for.\n"
           "\n"
           "Output files:\n"
           "  -o, --output-dir DIR        write every generated file into DIR, made with its parents if\n"
           "                              missing (default: current directory)\n"
           "  -I, --include-dir DIR       a directory #include searches (repeatable): each in the order\n"
           "                              given, then the schema file's directory\n"
           "      --depfile FILE          write a make rule to FILE: outputs depend on the schema and its #includes\n"
           "\n"
           "Output languages:\n"
           "  -c, --compiled-functions    access functions as real functions in {db}.c, not inline in {db}.h\n"
           "      --cpp                   also write the C++ wrappers {db}.hpp (implies -c)\n"
           "      --cpp-runtime-header    generated code includes zyl.hpp and gets C++ field properties\n"
           "      --cs                    also write C# declarations {db}.cs\n"
           "      --cs-namespace NS       namespace of the C# output\n"
           "      --java                  also write Java declarations, one .java file per class\n"
           "      --java-package PKG      package of the Java output\n"
           "      --xml-schema            also write the schema dump {db}.xml\n"
           "      --xml-access            generate XML read/write functions for each class\n"
           "      --json-access           generate JSON write functions for each class\n"
           "\n"
           "Layout and dictionary:\n"
           "      --keep-field-order      keep fields in declaration order; 8-byte scalars aligned to 8\n"
           "      --wide-offsets          8-byte offsets (bigger blob and sequence fields)\n"
           "      --dynamic-dict          fill the dictionary tables by code instead of static initialisers\n"
           "      --sizeof-size N         size in bytes of the target's size type (default 8)\n"
           "      --dump-dictionary       write no files: build the dictionary in memory, as an application\n"
           "                              loading the schema at run time would, and print it as JSON\n"
           "      --compare OLD-SCHEMA    write no files: compare the dictionary of OLD-SCHEMA with that of\n"
           "                              SCHEMA and print each change, breaking or compatible\n"
           "\n"
           "Naming:\n"
           "      --prefix-names          prefix generated names with the database name\n"
           "      --relative-class-codes  class codes relative to the dictionary's class code origin\n"
           "      --dll-spec              mark generated functions with ZYL_DLL_SPEC\n"
           "      --sql-reserved-words    also refuse SQL reserved words as names\n"
           "      --hide CLASS            generate no access code for CLASS (repeatable)\n"
           "      --hide-all              generate no access code for any class\n"
           "\n"
           "Defaults for classes:\n"
           "      --compact               classes are compact unless the schema says otherwise\n"
           "      --persistent            classes are persistent unless the schema says otherwise\n"
           "      --nonatomic             classes are nonatomic unless the schema says otherwise\n"
           "\n"
           "Diagnostics:\n"
           "      --diagnostics-format F  classic (the default: File s.zyl;  line 4: error: ...), gnu\n"
           "                              (s.zyl:4:3: error: ..., the source line and a caret) or json\n"
           "                              (one object per line); gnu and json point errors found after\n"
           "                              reading at the declaration at fault\n"
           "  -q, --quiet                 print nothing on success (warnings and errors are still printed)\n"
           "  -h, --help                  print this help and exit\n"
           "  -V, --version               print the version and the dictionary format it writes, and exit\n"
           "\n"
           "Exit status: 0 after a complete compile, 255 after a schema error (no partial output is left),\n"
           "2 for a wrong command line, 1 when the output directory cannot be made or the dependency file\n"
           "cannot be written. With --dump-dictionary a refused schema exits 1, and its message goes to\n"
           "standard error as FILE:LINE:COLUMN: error: MESSAGE.\n"
           "With --compare: 0 when no change is breaking, 1 when one is, 255 when either schema is refused.\n";
}
