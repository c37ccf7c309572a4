#include "cloud/cloud_service.h"
