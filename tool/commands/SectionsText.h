#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "stmdcm/capture/Container.h"
#include "stmdcm/capture/SectionRuns.h"
#include "tool/render/Palette.h"

namespace stmdcm {

/// Takes a text piece by piece.
using TextSink = std::function<void(std::string_view)>;

/// A capture's sections for people. Long lists are printed as they are made.
class SectionsText {
  public:
    /// All are borrowed.
    SectionsText(const Container& container, const Palette& palette, const TextSink& print)
        : m_container(container), m_palette(palette), m_print(print) {}

    /// One line for each run of alike sections, or for each section when `all`.
    void Print(const SectionRuns& runs, bool all);

  private:
    struct Row;

    std::string Heading() const;
    std::string Ending() const;
    void AddRun(const SectionRun& run);
    void AddSection(const Section& section);
    void Add(const Row& row);
    void Flush(std::size_t above);

    const Container& m_container;
    const Palette& m_palette;
    const TextSink& m_print;
    std::string m_text;
};

}  // namespace stmdcm
