// The one error type of the program: a number as the Windows runtime gives it, and a description.
// A procedure's own trap catches RuntimeError and nothing else; any other exception is a bug and surfaces as one.
// Back ends turn errors of the host into a RuntimeError in one place each.
#pragma once

#include <cstdint>
#include <exception>
#include <string>

namespace korlan {

// Numbers the program raises or tests. They are the ones the Windows runtime library documents.
enum ErrorNumber : std::int32_t {
    kErrInvalidCall = 5,         // invalid procedure call or argument
    kErrOverflow = 6,            // a number does not fit its type
    kErrSubscript = 9,           // an index lies outside a table
    kErrTypeMismatch = 13,       // a text is not a number
    kErrFileNotFound = 53,       // no such file, or no such library
    kErrDeviceIo = 57,           // reading or writing failed
    kErrDiskFull = 61,           // no room left
    kErrPastEndOfFile = 62,      // input past the end of a file
    kErrPermissionDenied = 70,   // access refused
    kErrPathAccess = 75,         // a path names something of the wrong kind, or read-only
    kErrPathNotFound = 76,       // no such folder
    kErrElementIndex = 35600,    // a row or an image of that number does not exist
    kErrElementNotFound = 35601, // a row or an image of that key does not exist
    kErrKeyNotUnique = 35602,    // a row of that key is already there
    kErrObjectNotSet = 91,       // a procedure of an object that is not there was called
    kErrNoLibraryEntry = 453,    // a library lacks a procedure
    kErrDatabase = 3000,         // first number of the database engine's own errors
    kErrDeliberateAbort = 9999,  // raised by the program itself to leave a procedure
};

class RuntimeError : public std::exception {
public:
    explicit RuntimeError(std::int32_t number); // with the runtime library's own text, where it has one
    RuntimeError(std::int32_t number, std::string description) : number_(number), description_(std::move(description)) {
        what_ = "run-time error " + std::to_string(number_) + (description_.empty() ? "" : ": " + description_);
    }
    std::int32_t Number() const { return number_; }
    const std::string& Description() const { return description_; }
    const char* what() const noexcept override { return what_.c_str(); }

private:
    std::int32_t number_;
    std::string description_;
    std::string what_;
};

} // namespace korlan
