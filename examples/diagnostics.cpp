// Parses each file named on the command line and prints its diagnostics, one per line, as
// FILE:LINE:COL: MESSAGE, or FILE: MESSAGE for one without a place in the text.
#include <vx/vx.h>

#include <iostream>
#include <memory>

int main(int argc, char** argv) {
    vx::Initialize();
    int status = 0;
    for (int i = 1; i < argc; ++i) {
        // Never null, even for a missing file; the caller deletes it.
        std::unique_ptr<vx::CXmlDocument> document(vx::CParse::ParseForFile(argv[i]));
        const vx::CParseErrorList errors = document->GetErrList();
        for (int e = 0; e < errors.GetSize(); ++e) {
            const vx::CParseError& error = errors.GetAt(e);
            std::cout << argv[i];
            // Errors about the file itself carry the position (-1,-1).
            if (error.HasPosition() && error.GetLine() > 0)
                std::cout << ':' << error.GetLine() << ':' << error.GetColumn();
            std::cout << ": " << vx::CVelStr(error.GetErrMsg()).c_str() << '\n';
        }
        if (!errors.IsEmpty()) status = 1;  // empty: well-formed, and the tree is complete
    }
    vx::Finalize();
    return status;
}
