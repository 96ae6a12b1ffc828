# The one service this build talks to. Compiled in: whoever can change an environment variable or a
# settings file must not be able to send the user's passkey somewhere else.

set(KELO_SERVICE_ORIGIN "https://localhost:8443" CACHE STRING "HTTPS origin of the assistant service: https://host or https://host:port")
set(KELO_TRUSTED_CA_FILE "" CACHE FILEPATH "One more certificate authority to trust (PEM); empty: the demo service's own for the default origin, none otherwise")

include(${CMAKE_CURRENT_LIST_DIR}/CheckServiceOrigin.cmake)

set(KELO_WIDGET_URL "${KELO_SERVICE_ORIGIN}/widget")
configure_file(${PROJECT_SOURCE_DIR}/src/deployment/Deployment.h.in ${PROJECT_BINARY_DIR}/rooms/deployment/deployment/Deployment.h @ONLY)

# The authority to compile in. For the default origin it is the demo's own, made once per build tree.
set(kelo_authority_source ${PROJECT_BINARY_DIR}/generated/TrustedAuthority.cpp)
if(KELO_TRUSTED_CA_FILE)
  if(NOT EXISTS "${KELO_TRUSTED_CA_FILE}")
    message(FATAL_ERROR "KELO_TRUSTED_CA_FILE is \"${KELO_TRUSTED_CA_FILE}\", and there is no such file.")
  endif()
  get_filename_component(kelo_authority_file "${KELO_TRUSTED_CA_FILE}" ABSOLUTE)
elseif(KELO_SERVICE_ORIGIN STREQUAL "https://localhost:8443")
  set(kelo_authority_file ${PROJECT_BINARY_DIR}/demo-authority/ca.pem)
  add_custom_command(
    OUTPUT ${kelo_authority_file}
    COMMAND kelo-demo-service --init --authority ${PROJECT_BINARY_DIR}/demo-authority
    COMMENT "Making the demo service's certificate authority"
    VERBATIM)
else()
  set(kelo_authority_file "")
endif()
add_custom_command(
  OUTPUT ${kelo_authority_source}
  COMMAND ${CMAKE_COMMAND} -DPEM=${kelo_authority_file} -DOUTPUT=${kelo_authority_source} -P ${PROJECT_SOURCE_DIR}/cmake/EmbedAuthority.cmake
  DEPENDS ${kelo_authority_file} ${PROJECT_SOURCE_DIR}/cmake/EmbedAuthority.cmake
  VERBATIM)

add_library(kelo_deployment STATIC ${kelo_authority_source})
file(CREATE_LINK ${PROJECT_SOURCE_DIR}/src/deployment/TrustedAuthority.h ${PROJECT_BINARY_DIR}/rooms/deployment/deployment/TrustedAuthority.h SYMBOLIC)
target_include_directories(kelo_deployment PUBLIC ${PROJECT_BINARY_DIR}/rooms/deployment)
