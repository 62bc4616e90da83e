#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

#include "stmdcm/capture/Container.h"
#include "stmdcm/capture/SectionRuns.h"
#include "tool/render/JsonRenderer.h"
#include "tool/render/Palette.h"

namespace stmdcm {

/// A capture's sections. Long lists are handed on as they are made. All is borrowed.
class SectionsReport {
  public:
    using Print = std::function<void(std::string_view)>;

    SectionsReport(const Container& container, const Palette& palette, Print print)
        : m_container(container), m_palette(palette), m_print(std::move(print)) {}

    /// For people: one line for each run of alike sections, or for each section when `all`.
    void PrintText(const SectionRuns& runs, bool all);
    /// For programs (docs/json-container.md).
    void PrintDocument();

  private:
    struct Row;

    std::string Heading() const;
    std::string Note(const Section& section) const;
    void AddSection(const Section& section);
    void AddRun(const SectionRun& run);
    void Add(const Row& row);
    std::string Ending() const;
    /// With an empty list at its end.
    Json EmptyDocument() const;
    const char* Problem(const Section& section) const;
    /// In one line. Formatted directly: a tree of 100,000 sections would take too much memory and time.
    std::string ItemDocument(const Section& section, const std::string& sectionName) const;
    void Flush(std::size_t above);

    const Container& m_container;
    const Palette& m_palette;
    const Print m_print;
    std::string m_text;
};

}  // namespace stmdcm
