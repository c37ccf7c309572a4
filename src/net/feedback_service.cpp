#include "net/feedback_service.h"
