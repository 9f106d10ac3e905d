# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
# What the programs in ORB_TOOLS_TREE need beside them: the sandbox with its library, the ready scenarios
# and the module for pytest. Copies, because a sandbox may hide the sources.
add_dependencies(orbd-sim orb_redirect)
set(configurations ${CMAKE_CONFIGURATION_TYPES})
if(NOT configurations)
  set(configurations only)
endif()
file(GLOB scenarios CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/orbd-sim/scenarios/*.json)
set(ORB_REDIRECT_FROM_BIN ../lib/liborb_redirect.so)
foreach(configuration ${configurations})
  string(REPLACE $<CONFIG> ${configuration} tree ${ORB_TOOLS_TREE})
  configure_file(${PROJECT_SOURCE_DIR}/scripts/sandbox ${tree}/bin/orb-sandbox @ONLY)
  foreach(scenario ${scenarios})
    get_filename_component(name ${scenario} NAME)
    configure_file(${scenario} ${tree}/share/orbd-sim/scenarios/${name} COPYONLY)
  endforeach()
  configure_file(testkit/python/orbsim_pytest.py ${tree}/share/orbsim/python/orbsim_pytest.py COPYONLY)
endforeach()
