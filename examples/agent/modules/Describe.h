#pragma once

#include <typeinfo>

#include "quillon/IMethodMetadataBuilder.h"

namespace quillon::agent {

// Add what is plain to the description of a method.

/// Adds a text that is mandatory.
void AddParameter(IMethodMetadataBuilder& builder, const char* name, const char* description);
/// Adds a text that may be left out, and is then empty.
void AddOptionalParameter(IMethodMetadataBuilder& builder, const char* name, const char* description);
void AddFlag(IMethodMetadataBuilder& builder, const char* name, const char* description);
void AddColumn(IMethodMetadataBuilder& builder, const char* name, const std::type_info& type,
               const char* description);

}  // namespace quillon::agent
