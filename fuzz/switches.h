// The compile switches of one fuzz input. A first line "//!" followed by
// letters turns switches on, one letter each; to the compiler that line is
// a comment, so both fuzz targets compile the same schema from the same
// bytes, and the fuzzer can find switches worth turning on by mutation.
#pragma once

#include <cstring>
#include <string>

#include "driver/job.h"
#include "zylcomp.h"

struct FuzzSwitches {
    bool keepFieldOrder = false;     // k
    bool wideOffsets = false;        // w
    bool compactDefault = false;     // c
    bool sqlReservedWords = false;   // s
    bool persistentDefault = false;  // p
    bool nonatomic = false;          // n
    bool hideAll = false;            // h
    bool prefixNames = false;        // x
    bool dynamicDictTables = false;  // d
    bool compiledFunctions = false;  // f
    bool cppWrappers = false;        // P: {db}.hpp
    bool xmlSchema = false;          // X: {db}.xml
    bool xmlAccess = false;          // A
    bool jsonAccess = false;         // O

    explicit FuzzSwitches(std::string const& text) {
        if (text.compare(0, 3, "//!") != 0)
            return;
        for (std::size_t i = 3; i < text.size() && text[i] != '\n' && text[i] != '\r'; i++) {
            switch (text[i]) {
            case 'k': keepFieldOrder = true; break;
            case 'w': wideOffsets = true; break;
            case 'c': compactDefault = true; break;
            case 's': sqlReservedWords = true; break;
            case 'p': persistentDefault = true; break;
            case 'n': nonatomic = true; break;
            case 'h': hideAll = true; break;
            case 'x': prefixNames = true; break;
            case 'd': dynamicDictTables = true; break;
            case 'f': compiledFunctions = true; break;
            case 'P': cppWrappers = true; break;
            case 'X': xmlSchema = true; break;
            case 'A': xmlAccess = true; break;
            case 'O': jsonAccess = true; break;
            default: break;
            }
        }
    }

    // Directories stay the caller's: the parameter record only borrows them.
    zyl_dict_load_params_t params(char const* outputDir, char const* includeDir) const {
        zyl_dict_load_params_t p = {};
        p.compiledFunctions = compiledFunctions;
        p.keepFieldOrder = keepFieldOrder;
        p.xmlSchema = xmlSchema;
        p.cppWrappers = cppWrappers;
        p.outputDir = outputDir;
        p.dynamicDictTables = dynamicDictTables;
        p.xmlAccess = xmlAccess;
        p.jsonAccess = jsonAccess;
        p.sqlReservedWords = sqlReservedWords;
        p.wideOffsets = wideOffsets;
        p.prefixNames = prefixNames;
        p.includeDir = includeDir;
        p.compactDefault = compactDefault;
        p.persistentDefault = persistentDefault;
        p.hideAllClasses = hideAll;
        p.atomicDefault = !nonatomic;
        return p;
    }

    void apply(Job& job) const {
        job.compiledFunctions = compiledFunctions;
        job.keepFieldOrder = keepFieldOrder;
        job.xmlSchema = xmlSchema;
        job.cppWrappers = cppWrappers;
        job.dynamicDictTables = dynamicDictTables;
        job.xmlAccess = xmlAccess;
        job.jsonAccess = jsonAccess;
        job.sqlReservedWords = sqlReservedWords;
        job.wideOffsets = wideOffsets;
        job.prefixNames = prefixNames;
        job.compactDefault = compactDefault;
        job.persistentDefault = persistentDefault;
        job.atomicDefault = !nonatomic;
        if (hideAll)
            job.hiddenClasses.push_back("");
    }
};
