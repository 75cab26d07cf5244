# A thumbnail and a cut in a container with a heap of its own.
set(home "${FOLDER}/container-heap")
file(REMOVE_RECURSE "${home}")
set(game "${home}/Videos/ZORVEX/Ovirastream/Game")
file(MAKE_DIRECTORY "${game}")

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${ARGN}: ${result}\n${output}")
  endif()
endfunction()

set(host "${CMAKE_COMMAND}" -E env "HOME=${home}" "XDG_DATA_HOME=${home}/data" "XDG_CONFIG_HOME=${home}/config"
  "XDG_CACHE_HOME=${home}/cache" "LD_PRELOAD=${HEAP}" "${HOST}")
run("${MAKER}" "${game}/a.mp4" 60 10)
run(${host} engrave "${game}/a.mp4" --app Game)
run(${host} thumb "${game}/a.mp4" -o "${home}/a.png")
run(${host} trim "${game}/a.mp4" -o "${game}/b.mp4" --from 0.5 --to 1.5)
