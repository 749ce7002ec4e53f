#pragma once

#include <cstdint>
#include <exception>
#include <initializer_list>
#include <string>

#include "quillon/InvocationResult.h"

namespace quillon::agent {

/// Writes a code and a message for people (UTF-8) into the result. Returns false.
bool Fail(std::int32_t code, const std::string& message, InvocationResult& result);
/// Does the same with the code of a bad parameter.
bool RefuseParameter(const std::string& message, InvocationResult& result);

/// Returns whether a parameter's text has no zero byte, at which the system would end it; refuses one that
/// has.
bool HasNoZeroByte(const std::string& name, const std::string& text, InvocationResult& result);

/// Returns the text of the thread's last error; nothing when that is none (0), or one of those codes.
std::string LastFailure(std::initializer_list<std::int32_t> expected);

/// Returns what an exception of a module says; empty when that is null.
const char* WhatOf(const std::exception& error);

}  // namespace quillon::agent
