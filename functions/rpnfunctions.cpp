// The families of functions and their prototype providers.

#include "functions/rpnfunctions.h"

#include "functions/rpnarrayfunctions.h"
#include "functions/rpncomplexfunctions.h"
#include "functions/rpnconversions.h"
#include "functions/rpndictionaryfunctions.h"
#include "functions/rpnenvironmentfunctions.h"
#include "functions/rpnlistfunctions.h"
#include "functions/rpnmatrixfunctions.h"
#include "functions/rpnrealfunctions.h"
#include "functions/rpnsampling.h"
#include "functions/rpnstringfunctions.h"
#include "functions/rpntablefunctions.h"
#include "functions/rpnversionfunctions.h"
#include "functions/rpnxmlfunctions.h"
#include "formula/rpnkeywords.h"
#include "formula/rpnprototypes.h"

#include <mutex>

void RegisterFunctionLibrary()
{
    static std::once_flag once;
    std::call_once(once, [] {
        // The functions stand on the core's nodes (values, lists, operators).
        RegisterLanguageCore();
        AddPrototypeProvider(ProvideRealFunctions);
        AddPrototypeProvider(ProvideComplexFunctions);
        AddPrototypeProvider(ProvideListFunctions);
        AddPrototypeProvider(ProvideSamplingFunctions);
        AddPrototypeProvider(ProvideArrayFunctions);
        AddPrototypeProvider(ProvideStringFunctions);
        AddPrototypeProvider(ProvideDictionaryFunctions);
        AddPrototypeProvider(ProvideConversionFunctions);
        AddPrototypeProvider(ProvideTableFunctions);
        AddPrototypeProvider(ProvideVersionFunctions);
        AddPrototypeProvider(ProvideEnvironmentFunctions);
        AddPrototypeProvider(ProvideMatrixFunctions);
        AddPrototypeProvider(ProvideXmlFunctions);
    });
}
