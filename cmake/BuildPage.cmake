# cmake -DNODE=... -DNPM=... -DSOURCE=... -DBUILD=... -DSTAGE=... -DSTAMP=... -P BuildPage.cmake: builds the page of the
# folder SOURCE and copies it into STAGE. When its packages cannot be fetched it says so and leaves no page, so that
# everything else can be built without a network; the next build tries again.

# Two presets may be built at once, and share the packages and the page.
file(MAKE_DIRECTORY "${BUILD}")
file(LOCK "${BUILD}/lock" GUARD PROCESS TIMEOUT 600)

# install(<result>): fetches the packages when the lock file is not the one they were fetched for.
function(install_packages result)
  set(mark "${SOURCE}/node_modules/.installed")
  file(SHA256 "${SOURCE}/package-lock.json" wanted)
  set(installed)
  if(EXISTS "${mark}")
    file(READ "${mark}" installed)
  endif()
  set(${result} TRUE PARENT_SCOPE)
  if(installed STREQUAL wanted)
    return()
  endif()
  message(STATUS "Fetching the page's packages (npm ci)")
  execute_process(COMMAND "${NPM}" ci --no-audit --no-fund WORKING_DIRECTORY "${SOURCE}" RESULT_VARIABLE failed)
  if(failed)
    set(${result} FALSE PARENT_SCOPE)
  else()
    file(WRITE "${mark}" "${wanted}")
  endif()
endfunction()

install_packages(ready)
file(REMOVE_RECURSE "${STAGE}")
if(NOT ready)
  message(WARNING "The gallery page is not built: its packages could not be fetched")
  return()
endif()
execute_process(COMMAND "${NODE}" scripts/build.mjs "${BUILD}/site"
  WORKING_DIRECTORY "${SOURCE}" COMMAND_ERROR_IS_FATAL ANY)
file(COPY "${BUILD}/site/" DESTINATION "${STAGE}")
file(TOUCH "${STAMP}")
