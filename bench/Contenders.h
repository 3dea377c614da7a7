#pragma once
// The ways of reading one input that the benchmark compares: vx's two entry points, the peer
// parsers and the decoding floor, each behind one function that parses the input once and frees
// what it built.
#include <string>
#include <vector>

#include "vx/platform/CodeConv.h"
#include "vx/text/VelStr.h"

namespace bench {

struct Input {
    std::string path;
    std::string name;  // the file name without folder and extension
    vcc::eCodeType code = vcc::eUtf8;
    std::string bytes;  // the file's content, when loaded
    vx::CVelStrW text;  // the decoded text, when loaded
};

// What one run saw.
struct Outcome {
    long errors = 0;       // diagnostics reported
    bool stopped = false;  // the parser gave up before the end of the input
};

struct Contender {
    const char* name;
    enum eNeeds { eFileOnly, eBytes, eText } needs;
    Outcome (*run)(const Input& input);
};

// In the order of the tables; the first is the decoding floor, the second vx's ParseForBuf.
const std::vector<Contender>& Contenders();
const Contender* FindContender(const std::string& name);

// Reads the file's encoding as vx detects it, and loads its bytes and decoded text as asked.
// Throws std::runtime_error for a file that cannot be read, or is neither UTF-8 nor Shift_JIS.
Input LoadInput(const std::string& path, bool withBytes, bool withText);

// What a benchmark program's main returns: main's result, or 1 after printing the text of the
// exception it threw, after the program's name.
// Lets the heap keep what a run frees for the next, as vx's page chunks do: otherwise a peer
// timed after vx faults on memory vx no longer leaves in the heap, and the ratios move with the
// order of the contenders rather than with the parsers. Only for timing: a memory measure in a
// fresh process must see what each parser itself adds.
void KeepFreedMemory();

int RunMain(const char* program, int (*main)(int, char**), int argc, char** argv);

}  // namespace bench
