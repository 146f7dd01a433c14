// From options and a catalogue to the pictures to make.
#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "render/job.h"
#include "render/options.h"
#include "render/source.h"

namespace render {

// Answers what options and source together say of any one picture. Both outlive it. One thread.
class Planner {
  public:
    // Reads the files of colours that the options name, if any. UsageError for options that ask
    // for a gradient where none is.
    Planner(const Options& chosen, const Source& from);

    // The numbers of the entries chosen, from 1. Failure when one of them is not there.
    EntryRange chosenEntries() const;

    // The size of a picture of this entry, or of a film that begins with it.
    Size sizeFor(const fractal& entry) const;

    // The view with its rectangle fitted, except where the source is a picture already and the size
    // has its proportions: that shows the very same.
    fractal fit(const fractal& view, Size size) const;

    // The picture of an entry by its number. Failure, which names it, where it cannot be made.
    Job jobOfEntry(std::uint64_t number) const;

    // The picture of a view in this size, without a place; its rectangle fitted, or as it is.
    Job jobFor(const fractal& view, Size size) const { return jobOf(fit(view, size), size); }
    Job jobOf(const fractal& view, Size size) const;

  private:
    void chooseColouring();
    std::shared_ptr<const Palette> paletteFor(std::int32_t type) const;
    bool hasProportionsOfSource(Size size) const;

    const Options& options;
    const Source& source;
    std::shared_ptr<const Palette> map;          // of the options, or else the source; may be null
    std::shared_ptr<const Colouring> colouring;  // null where the window's colours are wanted
    mutable std::shared_ptr<const Palette> builtIn[2];
};

// Where the pictures of a run go. `several`: whether there is more than one.
class Naming {
  public:
    // Failure when several pictures have one name.
    Naming(const Options& options, const Source& source, bool several);

    // The path of picture `number`, with at least so many digits.
    std::string operator()(std::uint64_t number, int digits) const;

  private:
    std::string whole;   // the one name of the one picture, or empty
    std::string prefix;  // of numbered names, folder and all
    std::string ending;  // of these
};

// The stills that the options ask for, in order of the entries.
std::vector<Job> planStills(const Options& options, const Source& source);

}  // namespace render
