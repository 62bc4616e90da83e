#pragma once

namespace stmdcm::validate {

// Where the rules stand that questions are about.

inline constexpr char kBuildRule[] = "docs/host-guide.md, \"Building a host\"";
inline constexpr char kLifeRule[] = "docs/host-guide.md, \"The life of a manager\"";
inline constexpr char kResultRule[] = "docs/host-guide.md, \"What a result means\"";
inline constexpr char kUsecaseRule[] = "docs/host-guide.md, \"Use cases\"";
inline constexpr char kLiveRule[] = "docs/host-guide.md, \"The live system: the trace factory\"";
inline constexpr char kGrantedRule[] = "docs/validate.md, \"What hosts take for granted\"";
inline constexpr char kGrammarRule[] = "docs/settings-text.md, \"Grammar\"";
inline constexpr char kReadingRule[] = "docs/settings-text.md, \"Reading\"";
inline constexpr char kFilesRule[] = "docs/settings-text.md, \"Files\"";
inline constexpr char kDeviceRule[] = "docs/settings-text.md, \"The section DEVID\"";
inline constexpr char kBlockRule[] = "docs/use-case-blocks.md, \"Grammar\"";
inline constexpr char kBlockLimitRule[] = "docs/use-case-blocks.md, \"Limits\"";
inline constexpr char kBadBlockRule[] = "docs/use-case-blocks.md, \"Bad and unknown input\"";
inline constexpr char kLayoutRule[] = "docs/tdf.md, \"Layout\"";
inline constexpr char kSearchRule[] = "docs/tdf.md, \"Searching\"";
inline constexpr char kSaveRule[] = "docs/tdf.md, \"Saving\"";
inline constexpr char kErrorRule[] = "docs/tdf.md, \"Errors\"";
inline constexpr char kImageLayoutRule[] = "docs/object-files.md, \"Layout\"";
inline constexpr char kImageReadingRule[] = "docs/object-files.md, \"Reading\"";
inline constexpr char kImageFindingRule[] = "docs/object-files.md, \"Finding one\"";
inline constexpr char kLogPlaceRule[] = "docs/log.md, \"Where it is\"";
inline constexpr char kLogLevelRule[] = "docs/log.md, \"How much is written\"";
inline constexpr char kLogLineRule[] = "docs/log.md, \"A line\"";

}  // namespace stmdcm::validate
