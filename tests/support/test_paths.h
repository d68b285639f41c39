#pragma once
#include <string>

namespace marrowfin::test {

// The source tree and the shared folder beside the clone, as CTest passes them.
std::string SourceDir();
std::string SharedDir();
// Reads a whole file as bytes; empty when it cannot be read.
std::string ReadBytes(const std::string& path);
// Writes a whole file, making its folders first.
void WriteBytes(const std::string& path, const std::string& bytes);

}  // namespace marrowfin::test
