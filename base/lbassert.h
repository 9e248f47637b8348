/// Assertions and the switch for their dialog.
#pragma once

#include "base/lbexport.h"

namespace LbAssert
{

/// Selects whether a failed assertion shows a dialog (the default) or is only traced (LbDiagnostics). Callable from any
/// thread.
LB_API void SetDialogEnabled(bool enabled) noexcept;
LB_API bool IsDialogEnabled() noexcept;

/// Handles a failed assertion: traces it and, if the dialog is enabled, asks the user to continue, break or abort.
LB_API void Fail(const char* condition, const char* file, int line);

} // namespace LbAssert

/// Checks a condition in debug builds; release builds do not evaluate it.
#ifdef NDEBUG
#define LB_ASSERT(Condition) static_cast<void>(sizeof(!(Condition)))
#else
#define LB_ASSERT(Condition) ((Condition) ? static_cast<void>(0) : LbAssert::Fail(#Condition, __FILE__, __LINE__))
#endif
