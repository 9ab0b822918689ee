<?php
// SimpleSAMLphp under PHP's own server, in the folder of the run.
$folder = getenv('INTEROP_FOLDER');
$config = [
    'baseurlpath' => getenv('INTEROP_URL'),
    'certdir' => $folder,
    'loggingdir' => $folder,
    'tempdir' => $folder,
    'metadatadir' => __DIR__ . '/metadata/',
    'secretsalt' => 'interop',
    'timezone' => 'UTC',
    'showerrors' => true,
    'logging.handler' => 'errorlog',
    'enable.saml20-idp' => true,
    'module.enable' => ['core' => true, 'saml' => true, 'exampleauth' => true],
    'session.duration' => 3600, // SessionNotOnOrAfter is that far away
    'session.cookie.secure' => false,
    'session.phpsession.savepath' => $folder,
    'store.type' => 'phpsession',
    'metadata.sources' => [['type' => 'flatfile']],
];
