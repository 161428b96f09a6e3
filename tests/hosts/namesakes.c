/* Functions of the host that happen to be called like some of Windows. Nobody is to call them. */
#include <stdlib.h>

void CreateFileW(void);
void GetLastError(void);
void SysAllocString(void);
void VariantClear(void);

void CreateFileW(void) { abort(); }
void GetLastError(void) { abort(); }
void SysAllocString(void) { abort(); }
void VariantClear(void) { abort(); }
