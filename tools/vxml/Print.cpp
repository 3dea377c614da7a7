#include "Commands.h"
#include "Document.h"
#include "Output.h"

namespace vxml {

int RunPrint(const Options& options) {
    return ShowDocument(options, [](vx::CXmlDocument& document) {
        UseLineFeeds(document);
        vx::CVelStringBuffer<vx::CVelStrW> source;
        document.GetSource(source);
        std::string text = ToUtf8(source.ToString());
        if (!text.empty() && text.back() != '\n') text += '\n';
        Write(stdout, text);
    });
}

}  // namespace vxml
