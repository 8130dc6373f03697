// How the host's pieces tell a person that something can't be done.
#pragma once

#include <stdexcept>

// The text names the file or key and the reason. main() prints it and ends with exit code 1.
class CHostError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};
