#pragma once

// The shared container and what it holds beside the messages.
#include "model/Accounts.h"
#include "model/AddressBook.h"
#include "model/ContainerPaths.h"
#include "model/GoodPath.h"
