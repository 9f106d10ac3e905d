# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
pytest_plugins = ["orbsim_pytest"]
