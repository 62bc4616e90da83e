#pragma once

#include <cstddef>
#include <string_view>

#include "trace/format/UsecaseKind.h"
#include "trace/format/ValueShape.h"

namespace Zu::Wep::Trace {

/// A line that sets a property.
struct PropertyLine {
    std::string_view name;
    std::string_view value;
    std::string_view between;  ///< what separates the two
    std::string_view rest;     ///< what stands behind the value and is not read
};

/// What a line is that ends the properties of a text.
enum class PropertiesEnd {
    Block,      ///< the opening line of a block
    NoValue,    ///< a name without a value, or nothing at all
    UnknownKey  ///< a name and a value, but no property has that name
};

/// What a reader does with a key line of a block.
enum class KeyUse {
    Field,    ///< stores the value in the field of that key
    Counter,  ///< adds a counter
    Type,     ///< knows the kind already
    Unknown   ///< ignores the line
};

/// A key line of a block, or of a formula in it.
struct BlockKey {
    std::string_view key;
    std::string_view value;
    KeyUse use = KeyUse::Unknown;
    ValueShape shape = ValueShape::Text;
    bool isInFormula = false;
};

/// Why a block is dropped.
enum class BlockFault {
    TextEnds,   ///< before its "}"
    BlankLine,  ///< before its "}"
    NoEquals,   ///< a line that is none of the grammar
    LineTooLong
};

/// How a formula ends.
enum class FormulaEnd {
    Closed,
    Open,  ///< by a blank line or the end of the text
    Empty  ///< "/$" in front of a blank line or the end of the text: there is no formula, and the block is complete
};

/// Why a record reads no further.
enum class BlocksEnd { TextEnds, BlankLine, BadBlock };

/// Hears what a reader of settings text (docs/settings-text.md) or of use-case blocks (docs/use-case-blocks.md) meets,
/// while it reads. It can change nothing: with none, and with any, a text gives the same. Lines are counted from 1 in
/// the text that is read; texts are borrowed for the call. A callback that is not overridden does nothing.
class TextReporter {
  public:
    virtual ~TextReporter() = default;

    // The lines of a settings text.
    virtual void OnLineCut(std::size_t /*line*/, std::size_t /*length*/, std::size_t /*limit*/) {}
    /// A zero byte ends the line's text behind that many characters.
    virtual void OnZeroByte(std::size_t /*line*/, std::size_t /*length*/) {}
    virtual void OnProperty(std::size_t /*line*/, const PropertyLine& /*property*/) {}
    /// A line of a device identification that has a name alone.
    virtual void OnNoValue(std::size_t /*line*/, std::string_view /*name*/) {}
    virtual void OnPackedBlock(std::size_t /*line*/, std::string_view /*text*/) {}
    virtual void OnPropertiesEnd(std::size_t /*line*/, PropertiesEnd /*why*/, std::string_view /*text*/) {}
    /// A line that nobody reads, since one-line blocks were met before.
    virtual void OnUnreadLine(std::size_t /*line*/, std::string_view /*text*/) {}

    // The lines of the blocks, as each of the three records meets them.
    virtual void OnSkippedLine(UsecaseKind /*kind*/, std::size_t /*line*/, std::string_view /*text*/) {}
    virtual void OnBlockOpened(UsecaseKind /*kind*/, std::size_t /*line*/, std::string_view /*text*/) {}
    /// The first line of a block says that it is of another kind.
    virtual void OnBlockPassed(UsecaseKind /*kind*/, std::size_t /*line*/, std::string_view /*text*/) {}
    virtual void OnKey(UsecaseKind /*kind*/, std::size_t /*line*/, const BlockKey& /*key*/) {}
    virtual void OnFormulaOpened(std::size_t /*line*/) {}
    /// A line within a formula that has no "=".
    virtual void OnFormulaSkipped(std::size_t /*line*/, std::string_view /*text*/) {}
    virtual void OnFormulaEnded(std::size_t /*line*/, FormulaEnd /*how*/) {}
    /// The block becomes a use case.
    virtual void OnBlockRead(UsecaseKind /*kind*/, std::size_t /*line*/) {}
    virtual void OnBlockDropped(UsecaseKind /*kind*/, std::size_t /*line*/, BlockFault /*fault*/,
                                std::string_view /*text*/) {}
    virtual void OnBlocksEnd(UsecaseKind /*kind*/, std::size_t /*line*/, BlocksEnd /*why*/) {}
};

}  // namespace Zu::Wep::Trace
