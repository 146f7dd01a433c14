// What the subcommands do, each with options that readCommandLine has found sound. What fails is
// thrown as a std::exception whose text is one line.
#pragma once

#include "frac/command/options.h"

void listEntries(const Options& options);
void checkCatalogue(const Options& options);
void exportDocument(const Options& options);
void importDocuments(const Options& options);
void setEntry(const Options& options);
void newCatalogue(const Options& options);
void mergeCatalogues(const Options& options);
void takeEntries(const Options& options);
