// What is wrong with a script: the faults that the reader finds, and in resource
// scripts the words, names and files that are not there.
#pragma once

#include "tarvix/kcbl.h"

#include <string>
#include <vector>

struct TFault
{
    TKCBLFault fault; ///< its place; the text there is not used
    std::string strText;
    bool bWarning = false; ///< the library reads the script all the same, and passes over this
};

/// The faults of the language. The tree is that of the text afterwards.
std::vector<TFault> FindFaults(CKCBL &kcbl, const std::string &strText);

/// Whether the library takes a text for a resource script.
bool IsResourceScript(const std::string &strText);
/// The faults of a resource script without faults of the language, by place.
/// @param folders  where the files are looked for that the script names
std::vector<TFault> CheckResource(const std::string &strText, const std::vector<std::string> &folders);
/// Both for a script file: the working directory, its own folder and others are searched.
std::vector<TFault> CheckScript(const std::string &strText, const std::string &strFile,
                                const std::vector<std::string> &folders = {});

/// "file:line:column"
std::string PlaceOf(const std::string &strFile, const TFault &fault);
/// What is wrong, with "warning: " before what is only passed over.
std::string TextOf(const TFault &fault);
/// Without the warnings.
size_t CountFaults(const std::vector<TFault> &faults);
/// Prints the place with the fault, the line of the script, and a mark under it.
void PrintFault(const std::string &strText, const std::string &strFile, const TFault &fault);
