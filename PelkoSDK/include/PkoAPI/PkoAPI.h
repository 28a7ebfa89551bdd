#ifndef PKOAPI_PKOAPI_H
#define PKOAPI_PKOAPI_H

// Everything a client of the camera SDK needs.
#include <PkoAPI/Camera.h>
#include <PkoAPI/Feature.h>
#include <PkoAPI/Frame.h>
#include <PkoAPI/IFeatureObserver.h>
#include <PkoAPI/Mutex.h>
#include <PkoAPI/PkoCommonTypes.h>
#include <PkoAPI/PkoSystem.h>
#include <PkoAPI/SharedPointer.h>

#endif
