<?php
// SimpleSAMLphp under PHP's own server, in the folder of the run.
$folder = getenv('INTEROP_FOLDER');
$config = [
    'baseurlpath' => getenv('INTEROP_URL'),
    'certdir' => $folder,
    'loggingdir' => $folder,
    'datadir' => $folder,
    'tempdir' => $folder,
    'metadatadir' => __DIR__ . '/metadata/',
    'secretsalt' => 'interop',
    'technicalcontact_email' => 'nobody@lakeside-cable.example',
    'timezone' => 'UTC',
    'showerrors' => true,
    'logging.handler' => 'errorlog',
    'enable.saml20-idp' => true,
    'module.enable' => ['core' => true, 'saml' => true, 'exampleauth' => true, 'exampleattributeserver' => true],
    'session.duration' => 3600, // the end of the session, as the authentication statement says it
    'session.cookie.secure' => false,
    'session.phpsession.savepath' => $folder,
    'store.type' => 'phpsession',
    'metadata.sources' => [['type' => 'flatfile']],
];
