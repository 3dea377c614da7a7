#pragma once
// The tool's own words, each in English and Japanese, and the language they are shown in. The
// library's diagnostic messages have their own two columns; this table never repeats them.
#include <initializer_list>
#include <string>
#include <string_view>

namespace vxml {

enum class Language { kJapanese, kEnglish };

enum class Text {
    // the command line
    kNoCommand,
    kUnknownCommand,
    kUnknownOption,
    kLangValue,
    kFormatValue,
    kJobsValue,
    kConvertTargets,
    kOptionNotTaken,
    kNeedsValue,
    kNoFile,
    kOneFile,
    kNeedsEncoding,
    kNeedsOutput,
    kTryHelp,
    // check
    kHint,
    kInExternalText,
    kExternalTextFor,
    kExternalFile,
    kSummary,
    kSummaryFailed,
    kProgress,
    kWorkerPipeBroke,
    kWorkerNotStarted,
    kWorkerEnded,
    // hints
    kIsDirectory,
    kNotRegularFile,
    kNotReadable,
    kEncodingHint,
    kUtf8ByteOrderMark,
    kBigEndian,
    kNoLessThanFirst,
    kShorterThanFour,
    kNoDeclaration,
    kDeclarationUnended,
    kEncodingUnquoted,
    kEncodingUnread,
    kNoEncoding,
    kBlanksAroundEquals,
    kNoEquals,
    // files
    kCannotCopyInput,
    kCannotCopyOutput,
    kCannotOpen,
    kNoTemporaryFile,
    kCannotWrite,
    // convert and save
    kNotWritten,
    kNotSaved,
    kDeclarationNeeded,
    kTooLarge,
    kUnwritableCharacter,
    kNotConvertible,
    kUnreadableResult,
    kOtherText,
    kOtherDiagnostics,
    kOtherTree,
    kSourceUnreadable,
    kNotSavable,
    kSaveLosesText,
    kHasDiagnostics,
    kListSeparator,
    // help
    kToolHelp,
    kCheckHelp,
    kPrintHelp,
    kTreeHelp,
    kSaveHelp,
    kConvertHelp,
};

void SetLanguage(Language language);
Language CurrentLanguage();

// The text in the current language, with "{1}", "{2}"... replaced by args in order.
std::string Say(Text text, std::initializer_list<std::string_view> args = {});

}  // namespace vxml
