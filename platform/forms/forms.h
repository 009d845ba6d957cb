// The retained forms: everything a form needs in one include.
#pragma once

#include "platform/forms/Buttons.h"
#include "platform/forms/CheckBox.h"
#include "platform/forms/Control.h"
#include "platform/forms/Form.h"
#include "platform/forms/HeadlessFormHost.h"
#include "platform/forms/Labels.h"
#include "platform/forms/Layout.h"
#include "platform/forms/ListBox.h"
#include "platform/forms/Lists.h"
#include "platform/forms/Menu.h"
#include "platform/forms/PictureBox.h"
#include "platform/forms/Tabs.h"
#include "platform/forms/TextBox.h"
#include "platform/forms/TreeView.h"
