#pragma once

#include <typeinfo>

#include "quillon/IMethodMetadataBuilder.h"

namespace quillon::agent {

// The plain cases of a method's description.

void AddParameter(IMethodMetadataBuilder& builder, const char* name, const char* description);
/// A text that may be left out, and is then empty.
void AddOptionalParameter(IMethodMetadataBuilder& builder, const char* name, const char* description);
void AddFlag(IMethodMetadataBuilder& builder, const char* name, const char* description);
void AddColumn(IMethodMetadataBuilder& builder, const char* name, const std::type_info& type,
               const char* description);

}  // namespace quillon::agent
