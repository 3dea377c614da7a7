#include "Commands.h"
#include "Document.h"
#include "Output.h"

namespace vxml {

int RunPrint(const Options& options) {
    return ShowDocument(options, [](vx::CXmlDocument& document) {
        UseLineFeeds(document);
        // The label says what the bytes are; a document without a declaration gets none.
        if (!document.GetVersion().IsEmpty() || !document.GetEncoding().IsEmpty()) {
            document.SetEncoding(u"UTF-8");
        }
        vx::CVelStringBuffer<vx::CVelStrW> source;
        document.GetSource(source);
        std::string text = ToUtf8(source.ToString());
        if (!text.empty() && text.back() != '\n') text += '\n';
        Write(stdout, text);
    });
}

}  // namespace vxml
