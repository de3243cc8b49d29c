#pragma once

#include <string>

// Writes bytes to path through a temporary file in the same folder and a
// rename, so that path holds either its old content or all of the new one.
// On failure returns false with a description in *error and the system's
// error number in *errorNumber (each when given), removes the temporary
// file and leaves an existing file at path untouched.
bool writeFileAtomically(const std::string& path, const std::string& bytes, std::string* error,
                         int* errorNumber = nullptr);
