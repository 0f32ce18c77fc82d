# The one table of layers. A library links only libraries of a lower layer; ky_add_library checks it.
#
# Libraries of one layer stand side by side and do not know each other.

set(KY_LAYER_rnlib 0)
set(KY_LAYER_rnwin 0)
set(KY_LAYER_ovbase 1)
set(KY_LAYER_jxbase 1)
set(KY_LAYER_ovwebservice 1)
set(KY_LAYER_ovvolren 2)
set(KY_LAYER_kyresources 2)
set(KY_LAYER_kybase 3)
set(KY_LAYER_kyreporttab 4)
set(KY_LAYER_kywebview 4)
set(KY_LAYER_kyscript 5)
set(KY_LAYER_kysite 5)
set(KY_LAYER_kyhost 6)

# In the order in which they are built.
set(KY_PLATFORM_LIBRARIES rnlib rnwin ovbase jxbase ovwebservice ovvolren kyresources kybase kyreporttab kywebview kysite)

# Stops the configuration when TARGET would link one of LINKS upward or sideways.
function(ky_check_layers target)
  if(NOT DEFINED KY_LAYER_${target})
    message(FATAL_ERROR "${target} has no row in cmake/KyLayers.cmake")
  endif()
  foreach(link IN LISTS ARGN)
    if(DEFINED KY_LAYER_${link} AND NOT KY_LAYER_${link} LESS KY_LAYER_${target})
      message(FATAL_ERROR "${target} (layer ${KY_LAYER_${target}}) must not link "
                          "${link} (layer ${KY_LAYER_${link}}): links go downward only")
    endif()
  endforeach()
endfunction()
