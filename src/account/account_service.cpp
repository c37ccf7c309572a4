#include "account/account_service.h"
