#include "tool/report/ReportPage.h"

#include <fmt/format.h>

#include <ctime>
#include <utility>

#include "stmdcm/reading/ConfigurationReader.h"
#include "stmdcm/reading/Words.h"
#include "tool/render/JsonRenderer.h"
#include "tool/report/Markup.h"

namespace stmdcm {

namespace {

struct PageFile {
    std::string_view name;
    std::string_view text;
};

// Each is a file of this folder; the scripts stand in the order of their numbers.
constexpr PageFile kPageFiles[] = {
#include "ReportFiles.inc"
};

std::string Joined(std::string_view extension) {
    std::string text;
    for (const PageFile& file : kPageFiles) {
        text += file.name.ends_with(extension) ? file.text : "";
    }
    return text;
}

/// What the page knows besides the captures.
std::string About() {
    Configuration fresh;
    Settings settings;
    Fill(fresh, settings);
    const std::int64_t now = std::time(nullptr);
    JsonWriter out = JsonRenderer::Begin("report");
    out.Member("version", STMDCM_VERSION).Member("made", std::to_string(now)).Member("made_utc", UtcTime(now));
    JsonRenderer::Write(out.Key("defaults"), fresh, {true, false, false, false});
    return out.EndObject().Take().text;
}

/// Nothing is loaded from anywhere, and no script or style runs but the page's own.
std::string Policy(std::string_view script, std::string_view style) {
    return fmt::format("default-src 'none'; script-src {}; style-src {}; base-uri 'none'; form-action 'none'",
                       PolicyHash(script), PolicyHash(style));
}

void Fill(std::string& page, std::string_view place, std::string_view text) {
    page.replace(page.find(place), place.size(), text);
}

}  // namespace

ReportPage::ReportPage(Write write) : m_write(std::move(write)) {
    const std::string script = Joined(".js");
    const std::string style = Joined(".css");
    std::string page = Joined(".html");
    Fill(page, "@POLICY@", Policy(script, style));
    Fill(page, "@STYLE@", style);
    Fill(page, "@ABOUT@", AsScriptData(About()));
    Fill(page, "@SCRIPT@", script);
    constexpr std::string_view kCaptures = "@CAPTURES@";
    const std::size_t place = page.find(kCaptures);
    m_end = page.substr(place + kCaptures.size());
    Put(page.substr(0, place));
}

void ReportPage::Put(std::string_view text) {
    m_write(text);
    m_size += text.size();
}

void ReportPage::Add(std::string_view line, std::string_view text) {
    ++m_captures;
    Put("<script type=\"application/json\" class=\"capture\">");
    Put(AsScriptData(line));
    Put("</script>\n<noscript><pre>");
    Put(AsHtml(text));
    Put("</pre></noscript>\n");
}

void ReportPage::End() { Put(m_end); }

}  // namespace stmdcm
