# SPDX-License-Identifier: Apache-2.0
from kestrove.functions import *
