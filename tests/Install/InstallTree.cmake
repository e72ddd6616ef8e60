# Installs the build BUILD into PREFIX, afresh.
file(REMOVE_RECURSE ${PREFIX})
execute_process(
    COMMAND ${CMAKE_COMMAND} --install ${BUILD} --prefix ${PREFIX}
    RESULT_VARIABLE status
)
if(NOT status EQUAL 0)
    message(FATAL_ERROR "cmake --install failed: ${status}")
endif()
