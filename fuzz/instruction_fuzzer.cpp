/// Checks for any bytes that the decoder reads at most 15 bytes, and that a trampoline can be built or is refused.
#include <algorithm>
#include <cstdlib>
#include <vector>

#include "fuzz/fuzzing.h"
#include "testing/lutestsuite/heap/trampoline.h"

using Fuzzing::Check;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    // On the heap, where a sanitizer detects reading beyond the end.
    const std::vector<std::uint8_t> code(data, data + size);
    const std::vector<std::uint8_t> most(data, data + std::min(size, LuTestSuite::c_InstructionMax));
    // Passes the size of the whole input, but at most 15 bytes exist.
    const auto instruction = LuTestSuite::DecodeInstruction({most.data(), size});
    const auto again = LuTestSuite::DecodeInstruction(most);
    Check(instruction.has_value() == again.has_value());
    if (instruction)
    {
        Check(instruction->length >= 1 && instruction->length <= most.size());
        Check(instruction->length == again->length);
        Check(instruction->displacementOffset + instruction->displacementSize <= instruction->length);
        Check(instruction->immediateOffset + instruction->immediateSize == instruction->length);
    }
    constexpr std::uintptr_t c_Target = 0x7F0000001000;
    constexpr std::uintptr_t c_Block = 0x7F0000100000;
    if (const auto trampoline = LuTestSuite::BuildTrampoline(code, c_Target, c_Block, c_Target + 0x100))
    {
        Check(trampoline->copyCount >= 1 && trampoline->placeCount >= 2);
    }
    return 0;
}
